#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <variant>

#include "Tests/Support/BackupBuilder.h"

#include "Tests/Support/SampleConversations.h"
#include "Tests/Support/SampleProfilePictures.h"
#include "Tests/Support/Screenplay.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"

namespace Fixture {
namespace {

std::map<std::string, std::string> filesOf(const BackupContents& backup) {
  const TemporaryDirectory folder;
  writeBackup(backup, folder / "device");
  std::map<std::string, std::string> contents;
  for (const auto& [name, entry] : treeSnapshot(folder.path())) contents[name] = entry.sha1;
  return contents;
}

double dateOf(const Message& message) { return std::get<double>(message.date); }
bool isEarlier(const Message& one, const Message& other) { return dateOf(one) < dateOf(other); }
std::string jidOf(const WhatsAppContents& app, const Message& message) {
  return std::get<std::string>(app.chats[static_cast<std::size_t>(std::get<std::int64_t>(message.chat)) - 1].jid);
}

TEST(SampleBackup, IsTheSameForASeed) {
  const SampleOptions options{.messageCount = 120, .mediaCount = 30, .encryption = Encryption{}};
  EXPECT_EQ(filesOf(sampleBackup(options)), filesOf(sampleBackup(options)));
  SampleOptions reseeded = options;
  reseeded.seed = 2;
  EXPECT_NE(filesOf(sampleBackup(options)), filesOf(sampleBackup(reseeded)));
}

TEST(SampleBackup, HoldsWhatWasAskedFor) {
  for (const std::size_t count : {500U, 1'200U}) {
    const WhatsAppContents app = sampleBackup({.messageCount = count, .mediaCount = 100}).whatsApp;
    EXPECT_EQ(app.messages.size(), count);
    EXPECT_EQ(app.chats.size(), 41U);
    EXPECT_EQ(std::ranges::count_if(app.mediaFiles, [](const MediaFile& file) { return file.message.has_value(); }),
              100);
    for (const MediaFile& file : app.mediaFiles) {
      if (!file.localPath.ends_with(".jpg")) continue;
      EXPECT_EQ(hex(ByteView(file.content).first(3)), "ffd8ff") << file.localPath;
      EXPECT_EQ(hex(ByteView(file.content).last(2)), "ffd9") << file.localPath;
    }
  }
}

TEST(SampleBackup, EndsEveryScriptedChatWithItsScript) {
  const BackupContents backup = sampleBackup({.messageCount = 1'000, .mediaCount = 100});
  const WhatsAppContents& app = backup.whatsApp;
  const double end = static_cast<double>(backup.backupTime) - 978'307'200;
  const std::vector<ScriptThread> threads = sampleScreenplay();
  EXPECT_EQ(threads.size(), 15U);
  for (const ScriptThread& thread : threads) {
    std::vector<Message> messages;
    std::ranges::copy_if(app.messages, std::back_inserter(messages),
                         [&](const Message& message) { return jidOf(app, message) == thread.jid; });
    ASSERT_GE(messages.size(), thread.lines.size()) << thread.jid;
    const auto script = messages.end() - static_cast<std::ptrdiff_t>(thread.lines.size());
    EXPECT_TRUE(std::is_sorted(script, messages.end(), isEarlier)) << thread.jid;
    EXPECT_TRUE(std::all_of(messages.begin(), script, [&](const Message& old) { return isEarlier(old, *script); }))
        << thread.jid;
    EXPECT_LT(dateOf(messages.back()), end) << thread.jid;
    for (std::size_t index = 0; index < thread.lines.size(); ++index) {
      const ScriptLine& line = thread.lines[index];
      const Message& message = *(script + static_cast<std::ptrdiff_t>(index));
      const bool isAsWritten = line.medium.empty() && line.text.find('@') == std::string::npos;
      if (isAsWritten) {
        EXPECT_EQ(message.text, SQLValue(line.text));
      }
      EXPECT_EQ(message.isFromMe, SQLValue(line.speaker == "Me" ? 1 : 0)) << line.text;
      EXPECT_EQ(message.type != 0, !line.medium.empty() || !line.preview.empty()) << line.text;
      EXPECT_EQ(message.receiptInfo != SQLValue(), !line.reactions.empty() || line.medium == "poll") << line.text;
      if (!thread.jid.ends_with("@g.us") || line.speaker == "Me") continue;
      EXPECT_TRUE(std::holds_alternative<std::int64_t>(message.member)) << line.text;
    }
  }
}

TEST(SampleBackup, HoldsEveryKindOfMessage) {
  const WhatsAppContents app = sampleBackup({.messageCount = 1'200, .mediaCount = 100}).whatsApp;
  std::set<std::int64_t> types;
  for (const Message& message : app.messages) types.insert(message.type);
  EXPECT_THAT(types, testing::IsSupersetOf(
                         {0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 14, 15, 24, 26, 27, 38, 46, 54, 55, 59, 91}));
  EXPECT_GT(app.calls->size(), 20U);
}

// Of the years before the scripts, by what hangs on messages.
TEST(SampleBackup, GivesOneMessageInEightSomething) {
  const WhatsAppContents app = sampleBackup().whatsApp;
  const auto hasMark = [](const Message& message) {
    return message.receiptInfo != SQLValue() || message.flags != 0 || message.starred;
  };
  const auto marked = std::ranges::count_if(app.messages, hasMark);
  const auto all = static_cast<double>(marked) + static_cast<double>(app.mediaItems.size());
  EXPECT_NEAR(all / static_cast<double>(app.messages.size()), 0.125, 0.03);
}

// Two answer what the phone has not kept.
TEST(SampleBackup, ScriptsAnswerWhatWasSaid) {
  std::size_t lost = 0;
  for (const ScriptThread& thread : sampleScreenplay()) {
    for (auto line = thread.lines.begin(); line != thread.lines.end(); ++line) {
      if (!line->answer) continue;
      const auto isAnswered = [&](const ScriptLine& other) {
        return other.speaker == line->answer->speaker && other.text.starts_with(line->answer->words);
      };
      if (std::none_of(thread.lines.begin(), line, isAnswered)) ++lost;
    }
  }
  EXPECT_EQ(lost, 2U);
}

TEST(SampleBackup, KeepsADateInTheDistantPastAndOneInTheFuture) {
  const WhatsAppContents app = sampleBackup().whatsApp;
  EXPECT_EQ(std::ranges::count_if(app.messages, [](const Message& message) { return dateOf(message) < 0; }), 1);
  EXPECT_EQ(std::ranges::count_if(app.messages, [](const Message& message) { return dateOf(message) > 1e9; }), 1);
}

TEST(SampleProfilePictures, ShowWhatPhonesHold) {
  const WhatsAppContents app = sampleBackup({.messageCount = 20, .mediaCount = 1}).whatsApp;
  SeededRandom random(3);
  std::map<std::string, Bytes> files;
  for (BackupFile& file : sampleProfilePictures(app.chats, true, random)) {
    ASSERT_TRUE(file.relativePath.starts_with("Media/Profile/")) << file.relativePath;
    files[file.relativePath.substr(14)] = std::move(file.content);
  }
  const auto namesOf = [&](const std::string& user, const std::string& extension) {
    std::vector<std::string> names;
    for (const auto& [name, content] : files) {
      if (name.substr(0, name.rfind('-')) == user && name.ends_with(extension)) names.push_back(name);
    }
    return names;
  };
  EXPECT_EQ(namesOf("5511900001111", ".jpg").size(), 2U) << "an older version and a newer one";
  EXPECT_EQ(namesOf("45678901234567", ".jpg").size(), 0U) << "the chat's own LID";
  EXPECT_EQ(namesOf("5511900012345", ".jpg").size(), 1U) << "the LID's phone number";
  EXPECT_EQ(namesOf("5511900002222-1400000000", ".jpg").size(), 1U) << "a group";
  EXPECT_EQ(namesOf("5511900002222", ".jpg").size(), 0U) << "the group's creator";
  EXPECT_EQ(namesOf("5571900001010", ".jpg").size(), 0U) << "the small size alone";
  EXPECT_EQ(namesOf("5571900001010", ".thumb").size(), 1U);
  ASSERT_EQ(namesOf("15550002222", ".jpg").size(), 1U);
  EXPECT_EQ(hex(ByteView(files[namesOf("15550002222", ".jpg")[0]]).subspan(8, 4)), hex(bytesOf("WEBP")));
  EXPECT_GT(files.size(), 50U);
}

}  // namespace
}  // namespace Fixture
