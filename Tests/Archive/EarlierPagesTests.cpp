#include "TidewellCore/Archive/EarlierPages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Library/LibraryScene.h"
#include "TidewellCore/Archive/ArchiveFormat.h"

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
    const EarlierPages pages(folder.path(), std::move(folders));
    warnings = pages.forEachChat(scene.library.media(), [&](const LibraryUpdate::EarlierChat& chat) {
      chats.push_back({.chat = chat.chat});
      for (const KeptMessage& message : chat.messages.list) {
        texts.emplace_back(message.page.value_or(""));
        messages.push_back({.key = message.key,
                            .time = message.time,
                            .placeInSecond = message.placeInSecond,
                            .medium = message.medium});
      }
    });
    return chats;
  }
  void write(const std::string& name, const std::string& text) const {
    Fixture::writeFile(folder / ("_viewer/data/" + name), text);
  }

  Fixture::TemporaryDirectory folder;
  LibraryScene scene;
  std::vector<std::string> texts;
  std::vector<KeptMessage> messages;  // without their texts
  std::vector<std::string> warnings;
};

// A list of one chat, "a", whose block is "block-1.js".
std::string listWithBlock(const std::string& parts) {
  return R"(window.ARCHIVE = {"format":2,"blocks":[{"file":"block-1.js","chats":)" + parts + "}]};\n" +
         R"(window.CHATS = [{"id":"a","jid":"a@x","name":"A","file":"chat-a.js"}];)";
}
constexpr const char* blockOfThree =
    "window.__BLOCK_PAYLOAD = String.raw`\"9\"\t5\t\"other\"\t{}\n\"1\"\t6\t\"one\"\t{}\n\"2\"\t7\t\"two\"\t{}\n`;\n";

TEST_F(EarlierPagesTest, WithoutAnArchiveTellNothing) { EXPECT_THAT(read(), IsEmpty()); }

TEST_F(EarlierPagesTest, TellWhatStandsBeforeACut) {
  write("chats.js", R"(window.CHATS = [{"id":"a","jid":"a@x","name":"A","file":"chat-a.js"}];)");
  write("chat-a.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1","text":"one"},{"id":"2","te)");
  EXPECT_THAT(read(), SizeIs(1));
  EXPECT_THAT(texts, ElementsAre(R"({"id":"1","text":"one"})"));
}

TEST_F(EarlierPagesTest, FindInTheBlocksWhatAChatsFileLacks) {
  write("chats.js", listWithBlock(R"([["b",0,1],["a",0,2]])"));
  write("block-1.js", blockOfThree);
  EXPECT_THAT(read(), SizeIs(1));
  EXPECT_THAT(texts, ElementsAre(R"({"id":"1","text":"one","ts":6})", R"({"id":"2","text":"two","ts":7})"));
  texts.clear();
  write("chat-a.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1","text":"one"},{"id":"2","te)");
  read();
  EXPECT_THAT(texts, ElementsAre(R"({"id":"1","text":"one"})", R"({"id":"2","text":"two","ts":7})"));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(EarlierPagesTest, SurviveBlocksThatLie) {
  for (const char* parts : {R"([["a",9223372036854775807,9223372036854775807]])", R"([["a",-9223372036854775808,-1]])",
                            R"([["a",0,1],["a",0,1],["a",0,9]])", R"([7,["a"],{}])", "7"}) {
    write("chats.js", listWithBlock(parts));
    write("block-1.js", blockOfThree);
    EXPECT_THAT(read().size(), testing::Le(1U)) << parts;
  }
}

TEST_F(EarlierPagesTest, TellOfAFileThatCannotBeReadAndKeepIt) {
  write("chats.js", listWithBlock(R"([["b",0,1],["a",0,2]])"));
  write("block-1.js", blockOfThree);
  write("chat-a.js", "");
  const fs::path file = folder / "_viewer/data/chat-a.js";
  fs::resize_file(file, std::uintmax_t{5} << 30);  // a hole; longer than any file that is read
  EXPECT_THAT(read(), SizeIs(1)) << "the blocks have it";
  EXPECT_THAT(texts, SizeIs(2));
  EXPECT_THAT(warnings, ElementsAre(HasSubstr("“chat-a.js”")));
  EXPECT_FALSE(fs::exists(file));
  EXPECT_TRUE(fs::exists(folder / "_viewer/data/chat-a-2.js"));
}

TEST_F(EarlierPagesTest, TellMessagesAsFarAsTheyCanBeTaken) {
  write("chats.js", R"(window.CHATS = [{"id":"a","jid":"a@x","file":"chat-a.js"}];)");
  write("chat-a.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"99999999999999999999"},7,{"id":"x","ts":1e300},)"
                     R"({"id":"5","ts":9.25},{"id":"5","ts":8.75},{"me":3,"text":[],"media":7}]};)");
  read();
  ASSERT_THAT(messages, SizeIs(5));
  EXPECT_EQ(messages[0].key, 0);
  EXPECT_EQ(messages[1].time, 8'640'000'000'000);
  EXPECT_EQ(messages[2].time, 9);
  EXPECT_EQ(messages[2].placeInSecond, 0);
  EXPECT_EQ(messages[3].placeInSecond, 1) << "in the page's order";
  EXPECT_EQ(messages[4].time, std::nullopt);
}

TEST_F(EarlierPagesTest, KnowTheBackupsOwnFileByItsPlace) {
  MediaLedger& ledger = scene.library.media();
  ledger.settle({.path = "Message/Media/x.jpg", .place = ExportPlace{"A", "x.jpg"}, .size = 1, .isThere = true});
  Fixture::writeFile(folder / "A/y.jpg", "four");
  write("chats.js", R"(window.CHATS = [{"id":"a","jid":"a@x","file":"chat-a.js"}];)");
  write("chat-a.js",
        R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1","media":{"kind":"photos","exported":true,"path":"A/x.jpg"}},)"
        R"({"id":"2","media":{"kind":"photos","exported":true,"path":"A/y.jpg"}},)"
        R"({"id":"3","media":{"kind":"photos","exported":true,"path":"A/lost.jpg"}}]};)");
  read();
  ASSERT_THAT(messages, SizeIs(3));
  EXPECT_EQ(messages[0].medium, ledger.enter("Message/Media/x.jpg"));
  const KeptMedium& told = *ledger.medium(messages[1].medium.value_or(-1));
  EXPECT_EQ(told.path, "archive/A/y.jpg");
  EXPECT_EQ(told.size, 4);
  EXPECT_TRUE(told.isThere);
  EXPECT_FALSE(ledger.medium(messages[2].medium.value_or(-1))->isThere);
}

TEST_F(EarlierPagesTest, FollowNoLinkToAFile) {
  Fixture::writeFile(folder / "elsewhere/x.jpg", "secret");
  fs::create_directory_symlink(folder / "elsewhere", folder / "A");
  write("chats.js", R"(window.CHATS = [{"id":"a","jid":"a@x","file":"chat-a.js"},)"
                    R"({"id":"b\\c","jid":"b@x","file":"chat-b.js"}];)");
  write("chat-a.js",
        R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1","media":{"kind":"photos","exported":true,"path":"A/x.jpg"}},)"
        R"({"id":"2","media":{"kind":"photos","exported":true,"path":"A\\..\\b/x.jpg"}}]};)");
  write("chat-b.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"id":"1"}]};)");
  EXPECT_THAT(read(), SizeIs(1)) << "a page under such a name could not be kept";
  ASSERT_THAT(messages, SizeIs(2));
  EXPECT_FALSE(scene.library.media().medium(messages[0].medium.value_or(-1))->isThere);
  EXPECT_EQ(messages[1].medium, std::nullopt);
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

// What the archive shows of a message that only a page told, as JSON.
std::string shownAgain(const std::string& message) {
  LibraryScene scene;
  const Fixture::TemporaryDirectory folder;
  Fixture::writeFile(folder / "A/x.jpg", "a file");
  Fixture::writeFile(folder / "_viewer/data/chats.js",
                     R"(window.CHATS = [{"id":"a","jid":"a@x","file":"chat-a.js"}];)");
  Fixture::writeFile(folder / "_viewer/data/chat-a.js", R"(window.__CHAT_PAYLOAD = {"messages":[)" + message + "]};");
  const ChatStorageSnapshot nothing = ExportTest::snapshotOf({});
  LibraryUpdate::take(
      scene.library,
      [&](const auto& take) { EarlierPages(folder.path(), {}).forEachChat(scene.library.media(), take); },
      {.snapshot = nothing, .backup = {.backupDate = dateFromUnixTime(1)}, .pageIDOf = ChatArchiveWriter::pageID}, {});
  scene.reopen();
  const std::vector<ArchiveMessage> shown = scene.messages("a@x");
  return shown.size() == 1 ? Json(ArchiveFormat::json(shown.front())).write() : "";
}

TEST(EarlierPagesShownAgain, AreWhatTheyWere) {
  for (
      const char* message :
      {R"({"id":"7","me":false,"sender":"Ana","text":"hi","ts":5})", R"({"id":"8","me":true,"sender":"Você"})",
       R"({"id":"7","info":{"options":[{"names":["Ana"],"words":"yes"}],"question":"Tea?"},"kind":"poll","me":false,)"
       R"("sender":"Ana","text":"Tea?\nyes","ts":5})",
       R"({"id":"7","info":{"code":2,"type":"joined"},"kind":"notice","me":false,"sender":"","text":"X joined","ts":5})",
       R"({"id":"7","marks":["deletedLater","forwarded","starred"],"me":false,"mentions":{"15550000002":"Ben"},)"
       R"("quote":{"me":true,"name":"You","part":"text","thing":"what?","to":"3"},)"
       R"("reactions":[{"emoji":"👍","names":["Ben"]}],"sender":"Ana","text":"@15550000002","ts":5})",
       R"({"id":"7","me":false,"media":{"exported":true,"kind":"stickers","name":"x.jpg","path":"A/x.jpg"},)"
       R"("sender":"Ana","ts":5})",
       R"({"id":"7","me":false,"media":{"exported":false,"kind":"videos","name":"lost.mp4"},"sender":"Ana","ts":5})"}) {
    EXPECT_EQ(shownAgain(message), message);
  }
}

TEST(EarlierPagesShownAgain, LeadToNoFileThatIsNotThere) {
  EXPECT_EQ(
      shownAgain(R"({"id":"7","me":false,"media":{"exported":true,"kind":"photos","path":"../x.jpg"},"sender":"A"})"),
      R"({"id":"7","me":false,"media":{"exported":false,"kind":"photos"},"sender":"A"})");
  EXPECT_EQ(shownAgain(R"({"id":"7","me":false,"sender":"A","ts":1e300})"),
            R"({"id":"7","me":false,"sender":"A","ts":8640000000000})");
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

// The backup's rows under other keys, as a phone has them that was restored.
void changeKeys(Fixture::WhatsAppContents& app) {
  std::int64_t key = 0;
  for (Fixture::Message& message : app.messages) {
    message.stanzaID = Fixture::stanzaIDOf(++key);
    message.pk = key + 100;
  }
  for (Fixture::MediaFile& file : app.mediaFiles) {
    if (file.message) *file.message += 100;
  }
}

TEST(EarlierExport, OfAnotherPhonesKeysIsTakenInOnce) {
  Scene scene(ExportTest::talkingBackup());
  auto& app = scene.contents.whatsApp;
  app.messages.back().text = {};  // a file and no words
  scene.write();
  scene.run(everything);
  const auto before = ExportTest::filesBelow(scene.destination);
  forgetLibrary(scene);
  changeKeys(app);
  scene.write();
  scene.run(everything);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST(EarlierExport, KeepsTheFilesOfWhatIsGone) {
  Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  const std::string link = ExportTest::linkOfFirst(scene, "Bea");
  ASSERT_FALSE(link.empty());
  forgetLibrary(scene);
  auto& app = scene.contents.whatsApp;
  const auto whole = app;
  changeKeys(app);
  app.chats.pop_back();
  app.messages.pop_back();
  app.messages.erase(app.messages.begin());
  std::erase_if(app.mediaFiles, [](const auto& file) { return file.localPath.find(bea) != std::string::npos; });
  app.mediaFiles.erase(app.mediaFiles.begin());
  scene.write();
  scene.run(everything);
  EXPECT_EQ(ExportTest::linkOfFirst(scene, "Bea"), link);
  EXPECT_THAT(textsOf(scene, ana), ElementsAre("text 1", "text 2"));
  ExportTest::expectWholeArchive(scene.destination);
  app = whole;
  scene.write();
  scene.run(everything);
  EXPECT_THAT(textsOf(scene, ana), ElementsAre("text 1", "text 2")) << "the older backup";
  EXPECT_THAT(textsOf(scene, bea), SizeIs(1));
  EXPECT_EQ(ExportTest::linkOfFirst(scene, "Bea"), link);
}

TEST(EarlierExport, IsStillReadAfterOneOfMediaAlone) {
  Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  const auto ofAna = textsOf(scene, ana);
  forgetLibrary(scene);
  auto& app = scene.contents.whatsApp;
  changeKeys(app);
  app.messages.erase(app.messages.begin());
  app.mediaFiles.erase(app.mediaFiles.begin());
  scene.write();
  scene.run(ExportTest::mediaAlone());
  ASSERT_TRUE(fs::exists(scene.content / LibraryFile::fileName));
  scene.run(everything);
  EXPECT_EQ(textsOf(scene, ana), ofAna);
}

TEST(EarlierExport, TellsOfAPageThatCannotBeRead) {
  const Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  forgetLibrary(scene);
  for (const auto& entry : fs::directory_iterator(scene.content / "_viewer/data")) {
    if (entry.path().filename().string().starts_with("chat-")) {
      fs::resize_file(entry.path(), std::uintmax_t{5} << 30);
      break;
    }
  }
  std::vector<std::string> warned;
  const auto summary = scene.run(everything, {.warned = [&](const std::string& text) { warned.push_back(text); }});
  EXPECT_THAT(summary.warnings, Contains(HasSubstr("could not be read")));
  EXPECT_EQ(warned, summary.warnings);
  EXPECT_TRUE(summary.mayBeIncomplete);
}

TEST(EarlierExport, OfALibraryWithADamagedHeaderIsReadAgain) {
  Scene scene(ExportTest::talkingBackup());
  scene.run(everything);
  const auto told = textsOf(scene, bea);
  const fs::path library = scene.content / LibraryFile::fileName;
  std::string bytes = ExportTest::textOf(library);
  for (std::size_t place = 0; place < 32; ++place) bytes[place] = static_cast<char>(bytes[place] ^ 0x55);
  Fixture::writeFile(library, bytes);
  auto& app = scene.contents.whatsApp;
  app.chats.pop_back();
  app.messages.pop_back();
  std::erase_if(app.mediaFiles, [](const auto& file) { return file.localPath.find(bea) != std::string::npos; });
  scene.write();
  EXPECT_THAT(scene.run(everything).warnings, Contains(HasSubstr("set aside")));
  EXPECT_EQ(textsOf(scene, bea), told);
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
