#include "TidewellCore/Archive/EarlierPages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Library/LibraryScene.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::Scene;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const ExportOptions everything = ExportOptions::defaultOptions();

// A library in a folder of its own that has read the pages of another.
struct EarlierPagesTest : testing::Test {
  std::vector<LibraryUpdate::EarlierChat> read(std::map<std::string, std::string> folders = {}) {
    std::vector<LibraryUpdate::EarlierChat> chats;
    EarlierPages(folder.path(), std::move(folders))
        .forEachChat(scene.library.media(), [&](const LibraryUpdate::EarlierChat& chat) {
          chats.push_back({.chat = chat.chat});
          for (const KeptMessage& message : chat.messages.list) texts.emplace_back(message.page.value_or(""));
        });
    return chats;
  }
  void write(const std::string& name, const std::string& text) const {
    Fixture::writeFile(folder / ("_viewer/data/" + name), text);
  }

  Fixture::TemporaryDirectory folder;
  LibraryScene scene;
  std::vector<std::string> texts;
};

TEST_F(EarlierPagesTest, WithoutAnArchiveTellNothing) { EXPECT_THAT(read(), IsEmpty()); }

TEST_F(EarlierPagesTest, TellWhatStandsBeforeACut) {
  write("chats.js", R"(window.CHATS = [{"id":"a","jid":"a@x","name":"A","file":"chat-a.js"}];)");
  write("chat-a.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1","text":"one"},{"id":"2","te)");
  EXPECT_THAT(read(), SizeIs(1));
  EXPECT_THAT(texts, ElementsAre(R"({"id":"1","text":"one"})"));
}

TEST_F(EarlierPagesTest, LeadNowhereElse) {
  Fixture::writeFile(folder / "secret.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1"}]};)");
  Fixture::writeFile(folder / "secret.jpg", "secret");
  write(
      "chats.js",
      R"(window.CHATS = [{"id":"a","jid":"a@x","file":"../../secret.js"},{"id":"../b","jid":"b@x","file":"chat-b.js"},)"
      R"({"id":"c","jid":"c@x","file":"chat-c.js","avatar":"../secret.jpg"}];)");
  write("chat-b.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1"}]};)");
  write("chat-c.js", R"(window.__CHAT_PAYLOAD = {"messages":[7,{"id":{},"ts":"x","media":{"kind":"photos",)"
                     R"("exported":true,"path":"../../secret.jpg"}}]};)");
  const auto chats = read();
  ASSERT_THAT(chats, SizeIs(1));
  EXPECT_EQ(chats[0].chat.avatar, std::nullopt);
  EXPECT_THAT(texts, SizeIs(1));
  EXPECT_THAT(scene.library.media().media(), IsEmpty());
}

TEST_F(EarlierPagesTest, FindAChatThatNoListNamesAnyMore) {
  write("chats.js", "window.CHATS = [];");
  write("chat-gone_x.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1","text":"still"}]};)");
  const auto chats = read({{"gone@x", "Gone"}, {"never@x", "Never"}});
  ASSERT_THAT(chats, SizeIs(1));
  EXPECT_EQ(chats[0].chat.jid, "gone@x");
  EXPECT_EQ(chats[0].chat.name, "Gone");
}

// What an earlier program left, whose exports had no library.
void forgetLibrary(const Scene& scene) { ASSERT_TRUE(fs::remove(scene.content / LibraryFile::fileName)); }

std::vector<std::string> textsOf(const Scene& scene, const std::string& jid) {
  Library library = Library::open(scene.content);
  const auto places = library.chatsOf({jid});
  std::vector<std::string> texts;
  if (places.empty()) return texts;
  const TranscriptStyle style = TranscriptStyle::english();
  for (const ArchiveMessage& message : ChatLines(library, style).messages(library.chats()[places.front()])) {
    texts.push_back(message.text.value_or(message.media ? message.media->fileName.value_or("?") : ""));
  }
  return texts;
}

TEST(EarlierExport, OfTheSameBackupIsTakenInOnce) {
  const Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  const auto before = ExportTest::filesBelow(scene.destination);
  const auto told = textsOf(scene, ana);
  forgetLibrary(scene);
  scene.run(everything);
  EXPECT_EQ(textsOf(scene, ana), told);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST(EarlierExport, KeepsWhatThePhoneHasDeletedSince) {
  Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  const auto ofAna = textsOf(scene, ana);
  const auto ofBea = textsOf(scene, bea);
  ASSERT_THAT(ofAna, Not(IsEmpty()));
  ASSERT_THAT(ofBea, Not(IsEmpty()));
  forgetLibrary(scene);
  auto& app = scene.contents.whatsApp;
  app.chats.pop_back();
  app.messages.pop_back();
  std::erase_if(app.mediaFiles, [](const auto& file) { return file.localPath.find(bea) != std::string::npos; });
  scene.write();
  scene.run(everything);
  EXPECT_EQ(textsOf(scene, ana), ofAna);
  EXPECT_EQ(textsOf(scene, bea), ofBea);
  scene.run(everything);
  EXPECT_EQ(textsOf(scene, bea), ofBea) << "once more";
}

TEST(EarlierExport, OfADamagedLibraryIsReadAgain) {
  const Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  const auto told = textsOf(scene, ana);
  fs::resize_file(scene.content / LibraryFile::fileName, 6000);
  const ExportSummary summary = scene.run(everything);
  EXPECT_THAT(summary.warnings, Contains(HasSubstr("set aside")));
  EXPECT_EQ(textsOf(scene, ana), told);
}

}  // namespace
