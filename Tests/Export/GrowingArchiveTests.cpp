// One archive of one person's backups over the years, in whatever order they are exported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/FolderNames.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::firstDate;
using ExportTest::group;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t deletedType = 14;
constexpr double day = 86'400;  // seconds

// A phone's backup, message after message.
class Phone {
 public:
  // `firstKey` is that of its first row.
  Phone(std::int64_t firstKey, std::int64_t backupTime) : key_(firstKey) {
    contents_.backupTime = backupTime;
    contents_.whatsApp.members = {{.pk = 1, .chat = 2, .jid = ana, .contactName = "Ana"},
                                  {.pk = 2, .chat = 2, .jid = bea, .contactName = "Bea"}};
  }

  void chat(std::int64_t pk, const std::string& jid, const std::string& name) {
    contents_.whatsApp.chats.push_back({.pk = pk, .jid = jid, .name = name});
  }
  void text(std::int64_t chat, double days, const std::string& text, const std::string& stanza) {
    add({.chat = chat, .date = firstDate + days * day, .text = text, .stanzaID = stanzaOf(stanza)});
  }
  void deleted(std::int64_t chat, double days, const std::string& stanza) {
    add({.chat = chat, .date = firstDate + days * day, .type = deletedType, .stanzaID = stanzaOf(stanza)});
  }
  void photo(std::int64_t chat, double days, const std::string& jid, const std::string& bytes,
             const std::string& stanza) {
    add({.chat = chat, .date = firstDate + days * day, .type = 1, .stanzaID = stanzaOf(stanza)});
    contents_.whatsApp.mediaFiles.push_back(ExportTest::media(jid, "a" + stanza, "jpg", bytes, key_ - 1));
  }
  const Fixture::BackupContents& contents() const { return contents_; }

 private:
  static Fixture::SQLValue stanzaOf(const std::string& stanza) {
    return stanza.empty() ? Fixture::SQLValue() : Fixture::SQLValue(stanza);
  }
  void add(Fixture::Message message) {
    message.pk = key_++;
    message.fromJID = ana;
    contents_.whatsApp.messages.push_back(std::move(message));
  }

  Fixture::BackupContents contents_;
  std::int64_t key_;
};

Fixture::BackupContents grown() {
  Phone phone(1, 1'700'000'000);
  phone.chat(1, ana, "Ana");
  phone.chat(2, group, "Us");
  phone.chat(3, bea, "Bea");
  phone.text(1, 0, "hello", "A1");
  phone.photo(1, 1, ana, "photo one", "A2");
  phone.text(3, 1.5, "from bea", "B1");
  phone.text(1, 2, "a secret", "A3");
  phone.text(1, 2, "ok", "");
  phone.text(1, 2, "ok", "");
  phone.photo(2, 3, group, "photo of the group", "G1");
  phone.text(1, 400, "a year later", "A4");
  return phone.contents();
}

// Half a year later: a chat, a photo and words were deleted, others changed.
Fixture::BackupContents withDeletions() {
  Phone phone(1, 1'715'000'000);
  phone.chat(1, ana, "Ana Lima");
  phone.chat(2, group, "All of us");
  phone.text(1, 0, "hello!", "A1");
  phone.deleted(1, 2, "A3");
  phone.text(1, 2, "ok", "");
  phone.text(1, 2, "ok", "");
  phone.photo(2, 3, group, "photo of the group", "G1");
  phone.text(1, 400, "a year later", "A4");
  phone.text(2, 401, "see you", "G2");
  return phone.contents();
}

// Another phone with other keys, and the last year alone.
Fixture::BackupContents newPhone() {
  Phone phone(900, 1'730'000'000);
  phone.chat(1, ana, "Ana Costa");
  phone.chat(2, group, "All of us");
  phone.text(1, 400, "a year later", "A4");
  phone.text(2, 401, "see you", "G2");
  phone.photo(1, 500, ana, "photo two", "A5");
  phone.text(1, 501, "bye", "A6");
  return phone.contents();
}

struct GrowingArchiveTest : testing::Test {
  void exportBackup(int number) {
    scene.contents = number == 0 ? grown() : number == 1 ? withDeletions() : newPhone();
    fs::remove_all(scene.backup);
    scene.write();
    scene.run(ExportTest::everything);
  }

  std::vector<std::string> texts(const std::string& chat) const {
    std::vector<std::string> texts;
    for (const Json::Object& message : ExportTest::messagesOf(scene.content, chat)) {
      const std::string text = ExportTest::textIn(message, "text");
      texts.push_back(ExportTest::mediumOf(message).empty() ? text : "photo");
    }
    return texts;
  }
  // The bytes of all photos, each as often as it stands there.
  std::multiset<std::string> photos() const {
    std::multiset<std::string> photos;
    for (const auto& [path, bytes] : ExportTest::filesBelow(scene.content)) {
      if (path.ends_with(".jpg")) photos.insert(bytes);
    }
    return photos;
  }
  // The chats' names in the order of their JIDs.
  std::vector<std::string> names() const {
    std::map<std::string, std::string> names;
    for (const Json::Object& chat : ExportTest::listedChats(scene.content)) {
      names.emplace(ExportTest::textIn(chat, "jid"), ExportTest::textIn(chat, "name"));
    }
    std::vector<std::string> list;
    for (const auto& [jid, name] : names) list.push_back(name);
    return list;
  }
  // `firstWords` are those that may have been changed meanwhile.
  template <typename Words>
  void expectEverything(const std::string& when, const Words& firstWords) const {
    const std::vector<std::string> all = names();
    ASSERT_EQ(all.size(), 3U) << when;
    EXPECT_THAT(texts(all[1]), ElementsAre(firstWords, "photo", "a secret", "ok", "ok", "a year later", "photo", "bye"))
        << when;
    EXPECT_THAT(texts(all[0]), ElementsAre("photo", "see you")) << when;
    EXPECT_THAT(texts(all[2]), ElementsAre("from bea")) << when;
    EXPECT_THAT(photos(), ElementsAre("photo of the group", "photo one", "photo two")) << when;
    EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty()) << when;
    ExportTest::expectWholeArchive(scene.destination);
  }

  ExportTest::Scene scene;
};

// The later backup has the chat under an anonymous identity, and does not say whose that is.
TEST_F(GrowingArchiveTest, HasOneFolderForAChatThatABackupKnowsLessOf) {
  Fixture::BackupContents& contents = scene.contents;
  contents.whatsApp.lidPairs = {{.lid = ExportTest::anaLID, .phoneNumber = ana}};
  scene.write();
  scene.run(ExportOptions::defaultOptions());
  contents.whatsApp.lidPairs.reset();
  contents.whatsApp.chats[0].jid = ExportTest::anaLID;
  contents.backupTime += 1000;
  scene.write();
  scene.run(ExportOptions::defaultOptions());
  EXPECT_THAT(FolderManifest::load(scene.destination),
              testing::AllOf(testing::Contains(testing::Pair(ana, "Ana")),
                             testing::Contains(testing::Pair(ExportTest::anaLID, "Ana"))));
  EXPECT_FALSE(fs::exists(scene.content / "Ana-2"));
  EXPECT_EQ(names().size(), 3U);
}

TEST_F(GrowingArchiveTest, HasEverythingOnceInEveryOrder) {
  std::vector<int> order{0, 1, 2};
  do {
    fs::remove_all(scene.destination);
    for (const int number : order) exportBackup(number);
    expectEverything(testing::PrintToString(order), "hello!");
    EXPECT_THAT(names(), ElementsAre("All of us", "Ana Costa", "Bea"));
  } while (std::ranges::next_permutation(order).found);
}

// As it is where an earlier program made the first export, or a library was lost. Nobody knows then how old the
// words of the pages are.
TEST_F(GrowingArchiveTest, HasEverythingOnceAfterAnExportWithoutALibrary) {
  std::vector<int> order{0, 1, 2};
  do {
    fs::remove_all(scene.destination);
    exportBackup(order[0]);
    ExportTest::forgetLibrary(scene.destination);
    exportBackup(order[1]);
    exportBackup(order[2]);
    expectEverything(testing::PrintToString(order), testing::StartsWith("hello"));
  } while (std::ranges::next_permutation(order).found);
}

TEST_F(GrowingArchiveTest, ItsNewestStateComesBackWhenAllIsExportedOnceMore) {
  for (const int number : {0, 1, 2}) exportBackup(number);
  const auto before = ExportTest::filesBelow(scene.destination);
  for (const int number : {1, 0, 2}) exportBackup(number);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST_F(GrowingArchiveTest, AnOlderBackupBringsNoOlderPicture) {
  const auto exportWith = [this](const std::string& picture, std::int64_t backupTime) {
    scene.contents = ExportTest::smallBackup();
    scene.contents.backupTime = backupTime;
    scene.contents.whatsApp.files = {
        Fixture::profilePicture("5511900001111", backupTime / 1'000'000, ExportTest::picture(picture))};
    fs::remove_all(scene.backup);
    scene.write();
    scene.run(ExportTest::everything);
  };
  exportWith("today", 1'730'000'000);
  const auto before = ExportTest::filesBelow(scene.destination);
  exportWith("as a child", 1'700'000'000);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
  fs::remove_all(scene.content / FolderNames::avatars);
  exportWith("as a child", 1'700'000'000);
  const fs::path picture = scene.content / ExportTest::textIn(ExportTest::listedChat(scene.content, "Ana"), "avatar");
  EXPECT_EQ(Fixture::readFile(picture), ExportTest::picture("as a child"));
}

// Berlin, Tokyo and Egypt.
TEST_F(GrowingArchiveTest, AnotherZoneAndLanguageCopyNothing) {
  exportBackup(0);
  const auto photosBefore = photos();
  for (const auto& [zone, locale] :
       {std::pair("Europe/Berlin", "de_DE"), std::pair("Asia/Tokyo", "ja_JP"), std::pair("Africa/Cairo", "ar_EG")}) {
    const Exporter exporter{.timeZone = TimeZone{zone},
                            .locale = Locale{locale},
                            .transcriptStyle = TranscriptStyle::matching(Locale{locale}),
                            .isTimeZoneChosen = true,
                            .isLocaleChosen = true};
    const ExportSummary summary = exporter.exportBackup({.backup = scene.backup, .destination = scene.destination});
    EXPECT_EQ(summary.copiedCount, 0) << zone;
    EXPECT_EQ(photos(), photosBefore) << zone;
  }
}

}  // namespace
