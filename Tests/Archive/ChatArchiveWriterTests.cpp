#include "TidewellCore/Archive/ChatArchiveWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/MessageBlocks.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/ExportTexts.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const TranscriptStyle english = TranscriptStyle::english();
const TranscriptStyle portuguese = TranscriptStyle::portuguese();

std::string textOf(const fs::path& file) {
  const Fixture::Bytes bytes = Fixture::readFile(file);
  return {bytes.begin(), bytes.end()};
}

std::string preview(const ArchiveMessage& message, const TranscriptStyle& style = english) {
  return ChatArchiveWriter::preview(&message, style);
}

ArchiveChat chat(const std::string& id, std::vector<ArchiveMessage> messages = {}) {
  return {.id = id, .name = "Chat " + id, .jid = id + "@s.whatsapp.net", .folder = id, .messages = std::move(messages)};
}

std::vector<std::string> idsByActivity(std::vector<ArchiveChatSummary> chats) {
  std::vector<std::string> ids;
  for (const auto& sorted : ChatArchiveWriter::sortedByActivity(std::move(chats), english)) ids.push_back(sorted.id);
  return ids;
}

struct ChatArchiveWriterTest : testing::Test {
  fs::path write(const std::vector<ArchiveChat>& chats, const TranscriptStyle& style = english) const {
    return ChatArchiveWriter::write({.destination = folder.path(),
                                     .contentRoot = content,
                                     .style = style,
                                     .timeZone = {.identifier = "Asia/Tokyo"},
                                     .locale = {.identifier = "pt_JP"}},
                                    chats);
  }
  std::string data(const std::string& name) const { return textOf(content / "_viewer/data" / name); }
  Json archive() const { return ChatArchiveJSON::parseAssignment(data("chats.js"), "ARCHIVE").value(); }
  std::vector<std::string> blockNames() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(content / "_viewer/data")) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with("block-")) names.push_back(name);
    }
    return names;
  }

  Fixture::TemporaryDirectory folder;
  fs::path content = folder / "messages";
};

TEST_F(ChatArchiveWriterTest, LaysOutPageViewerAndData) {
  EXPECT_EQ(write({chat("1", {{.id = "7", .sender = "Ana", .timestamp = 10, .text = "hi"}})}), folder / "index.html");
  for (const char* file : {"_viewer/app.css", "_viewer/app.js", "_viewer/data/chats.js", "_viewer/data/chat-1.js"}) {
    EXPECT_TRUE(fs::is_regular_file(content / file)) << file;
  }
  const std::string page = textOf(folder / "index.html");
  EXPECT_THAT(page, HasSubstr("window.ARCHIVE_BASE = \"messages/\";"));
  for (const char* file : {"messages/_viewer/app.css", "messages/_viewer/data/chats.js", "messages/_viewer/app.js"}) {
    EXPECT_THAT(page, HasSubstr("\"" + std::string(file) + "\""));
  }
  EXPECT_THAT(page, Not(HasSubstr("{{")));
}

TEST_F(ChatArchiveWriterTest, AnOlderExportsContentRootIsTheDestination) {
  content = folder.path();
  write({});
  const std::string page = textOf(folder / "index.html");
  EXPECT_THAT(page, HasSubstr("window.ARCHIVE_BASE = \"\";"));
  EXPECT_THAT(page, HasSubstr("\"_viewer/data/chats.js\""));
}

TEST_F(ChatArchiveWriterTest, WritesAChatsMessages) {
  write({chat(
      "1",
      {{.id = "1", .fromMe = true, .sender = "You", .text = "</script>"},
       {.id = "2", .sender = "Ana", .timestamp = 1.5, .media = ArchiveMedia{.kind = MediaKind::voiceNotes}},
       {.id = "3",
        .sender = "Ana",
        .timestamp = -0.4,
        .media = ArchiveMedia{
            .kind = MediaKind::photos, .relativePath = "Ana/a #1.jpg", .fileName = "a #1.jpg", .exported = true}}})});
  EXPECT_EQ(data("chat-1.js"),
            "window.__CHAT_PAYLOAD = {\"messages\":["
            R"({"id":"1","me":true,"sender":"You","text":"\u003c/script>"},)"
            R"({"id":"2","me":false,"media":{"exported":false,"kind":"voiceNotes"},"sender":"Ana","ts":2},)"
            R"({"id":"3","me":false,"media":{"exported":true,"kind":"photos","name":"a #1.jpg","path":"Ana/a #1.jpg"},)"
            R"("sender":"Ana","ts":0})"
            "]};\n");
}

TEST_F(ChatArchiveWriterTest, CleansTextAlikeInDataAndTranscripts) {
  write(
      {chat("1", {{.id = "1", .sender = "A\x01na", .text = "a\r\nb\x02"}, {.id = "2", .sender = "Ana", .text = ""}})});
  EXPECT_THAT(data("chat-1.js"), HasSubstr("\"sender\":\"A\uFFFDna\",\"text\":\"a\\nb\uFFFD\"}"));
  EXPECT_THAT(data("chat-1.js"), HasSubstr(R"({"id":"2","me":false,"sender":"Ana"})"));
}

TEST_F(ChatArchiveWriterTest, ListsTheChats) {
  ArchiveChat group = chat("g", {{.id = "1", .fromMe = true, .sender = "You", .timestamp = 99.6, .text = "see\nyou"},
                                 {.id = "2", .fromMe = true, .sender = "You", .text = "later"}});
  group.isGroup = true;
  group.avatarRelativePath = "avatars/g.jpeg";
  write({chat("empty"), group}, portuguese);
  const std::string list = data("chats.js");
  EXPECT_THAT(
      list, HasSubstr("window.CHATS = [{\"avatar\":\"avatars/g.jpeg\",\"count\":2,\"file\":\"chat-g.js\","
                      "\"folder\":\"g\",\"group\":true,\"id\":\"g\",\"jid\":\"g@s.whatsapp.net\",\"lastTs\":100,"
                      "\"name\":\"Chat g\",\"preview\":\"Você: later\"},"
                      "{\"count\":0,\"file\":\"chat-empty.js\",\"folder\":\"empty\",\"group\":false,"
                      "\"id\":\"empty\",\"jid\":\"empty@s.whatsapp.net\",\"name\":\"Chat empty\",\"preview\":\"\"}];"));
  EXPECT_EQ(data("chat-empty.js"), "window.__CHAT_PAYLOAD = {\"messages\":[]};\n");
}

TEST_F(ChatArchiveWriterTest, TellsInEveryFileWhatThePhoneNoLongerHas) {
  ArchiveChat gone = chat("1", {{.id = "1", .sender = "Ana", .text = "hi", .isDeletedLater = true, .isGone = true}});
  gone.isGone = true;
  write({gone});
  const std::string others = R"("marks":["deletedLater","gone"],"me":false,"sender":"Ana")";
  EXPECT_THAT(data("chat-1.js"), HasSubstr(R"({"id":"1",)" + others + R"(,"text":"hi"})"));
  ASSERT_EQ(blockNames().size(), 1U);
  EXPECT_THAT(data(blockNames().front()), HasSubstr("\"1\"\t\t\"hi\"\t{" + others + "}"));
  EXPECT_THAT(data("chats.js"), HasSubstr(R"("gone":true,"group":false,"id":"1")"));
}

TEST_F(ChatArchiveWriterTest, DescribesTheArchiveInItsLanguage) {
  write({}, portuguese);
  const Json json = archive();
  const auto& members = *json.as<Json::Object>();
  EXPECT_EQ(*members.at("title").as<std::string>(), "Arquivo de Conversas");
  EXPECT_EQ(*members.at("timeZone").as<std::string>(), "Asia/Tokyo");
  EXPECT_EQ(*members.at("region").as<std::string>(), "JP");
  const auto& strings = *members.at("strings").as<Json::Object>();
  EXPECT_EQ(strings.size(), ExportTexts::section("pt-BR", "page").size());
  EXPECT_EQ(*strings.at("searchMinChars").as<std::string>(), "Digite pelo menos dois caracteres.");
  EXPECT_EQ(*strings.at("next").as<std::string>(), "Próxima");
}

TEST_F(ChatArchiveWriterTest, ChatsWithLaterMessagesComeFirst) {
  EXPECT_THAT(idsByActivity({{.id = "none", .name = "a"},
                             {.id = "old", .name = "b", .lastTimestamp = 1},
                             {.id = "new", .name = "c", .lastTimestamp = 2}}),
              ElementsAre("new", "old", "none"));
  EXPECT_THAT(idsByActivity({{.id = "1", .name = "zoe"}, {.id = "2", .name = "Émile"}, {.id = "3", .name = "anna"}}),
              ElementsAre("3", "2", "1"))
      << "equal ones by name, letter case ignored";
  EXPECT_THAT(idsByActivity({{.id = "none"}, {.id = "before 1970", .lastTimestamp = -5}}),
              ElementsAre("none", "before 1970"))
      << "no date counts as -1";
}

TEST_F(ChatArchiveWriterTest, MakesIDsThatAreFileNames) {
  EXPECT_EQ(ChatArchiveWriter::safeID("5511-90_1.x@s.whatsapp.net", 3), "5511-90_1.x_s.whatsapp.net");
  EXPECT_EQ(ChatArchiveWriter::safeID("../é", std::nullopt), "_.___");
  EXPECT_EQ(ChatArchiveWriter::safeID("", 42), "chat-42");
  EXPECT_EQ(ChatArchiveWriter::safeID("", std::nullopt), "chat-0");
  EXPECT_LE(ChatArchiveWriter::safeID(std::string(5000, 'x'), 1).size(), 200U);
}

TEST_F(ChatArchiveWriterTest, PageIDsAreTakenByEveryDrive) {
  EXPECT_EQ(ChatArchiveWriter::pageID("a#b"), "a_b");
  EXPECT_NE(ChatArchiveWriter::pageID("con"), "con");
}

TEST_F(ChatArchiveWriterTest, PreviewsTheLastMessage) {
  EXPECT_EQ(ChatArchiveWriter::preview(nullptr, english), "");
  EXPECT_EQ(preview({.sender = "Ana", .text = " two\n\n lines\t"}), "two lines");
  EXPECT_EQ(preview({.fromMe = true, .text = "mine"}), "You: mine");
  EXPECT_EQ(preview({.fromMe = true, .media = ArchiveMedia{.kind = MediaKind::voiceNotes}}, portuguese), "Você: Áudio");
  EXPECT_EQ(preview({.text = "caption", .media = ArchiveMedia{.kind = MediaKind::photos}}), "caption");
  EXPECT_EQ(preview({.text = " \n", .media = ArchiveMedia{.kind = MediaKind::stickers}}), "Sticker");
  EXPECT_EQ(preview({.fromMe = true}), "");
}

TEST_F(ChatArchiveWriterTest, ThePreviewOfAKindIsItsWords) {
  const auto previewOf = [](const MessageContent& kind, ArchiveMessage message = {.sender = "Ana"}) {
    MessageWords::tell({.content = kind}, {.wording = {.style = english}}, message);
    return preview(message);
  };
  const ArchiveMessage mine{.fromMe = true, .sender = "You"};
  EXPECT_EQ(previewOf(CallRecord{.isVideo = false, .seconds = 95}, mine), "You: Voice call, 1:35");
  EXPECT_EQ(previewOf(Product{.title = "A lamp", .description = "It shines"}), "Product: A lamp It shines");
  EXPECT_EQ(previewOf(Notice{.kind = NoticeKind::memberLeft, .actor = Person{.isOwner = true}}, mine), "You left");
  EXPECT_EQ(previewOf(DeletedMessage{}, mine), "You deleted this message");
  EXPECT_EQ(previewOf(WaitingMessage{}), "Waiting for this message");
}

TEST_F(ChatArchiveWriterTest, ThePreviewNamesPeople) {
  ArchiveMessage message{.text = "hi @15550000002", .details = ArchiveDetails{.mentions = {{"15550000002", "Ben"}}}};
  EXPECT_EQ(preview(message), "hi @Ben");
}

TEST_F(ChatArchiveWriterTest, CutsAPreviewBetweenCharacters) {
  std::string families;
  for (int i = 0; i < 101; ++i) families += "👨‍👩‍👧";
  EXPECT_EQ(preview({.text = families}), families.substr(0, families.size() / 101 * 100));
}

TEST_F(ChatArchiveWriterTest, DatesBeyondWhatABrowserKnowsAreItsLast) {
  const auto ts = [](double timestamp) {
    return *ChatArchiveWriter::dictionary(ArchiveMessage{.timestamp = timestamp}).at("ts").as<std::int64_t>();
  };
  EXPECT_EQ(ts(1e300), 8'640'000'000'000);
  EXPECT_EQ(ts(-1e300), -8'640'000'000'000);
}

TEST_F(ChatArchiveWriterTest, WritesTheSameArchiveAgainWithoutTouchingIt) {
  const std::vector<ArchiveChat> chats{chat("1", {{.id = "1", .sender = "Ana", .text = "a"}}), chat("2")};
  write(chats);
  const auto before = Fixture::treeSnapshot(folder.path());
  write(chats);
  EXPECT_EQ(Fixture::treeSnapshot(folder.path()), before);
}

TEST_F(ChatArchiveWriterTest, KeepsTheDataOfChatsThatAreGone) {
  write({chat("gone", {{.id = "1", .sender = "Ana", .text = "a"}})});
  write({chat("here")});
  EXPECT_THAT(data("chat-gone.js"), HasSubstr("\"text\":\"a\""));
  EXPECT_THAT(data("chats.js"), Not(HasSubstr("chat-gone.js")));
}

// As a power cut leaves one that was just written.
TEST_F(ChatArchiveWriterTest, ReplacesAnEmptyPage) {
  Fixture::writeFile(folder / "index.html", "");
  write({});
  EXPECT_FALSE(fs::exists(folder / "index-2.html"));
  EXPECT_THAT(textOf(folder / "index.html"), HasSubstr("window.ARCHIVE_BASE"));
}

TEST_F(ChatArchiveWriterTest, SetsAForeignPageAside) {
  Fixture::writeFile(folder / "index.html", "my home page");
  Fixture::writeFile(folder / "index-2.html", "another");
  write({});
  EXPECT_EQ(textOf(folder / "index-3.html"), "my home page");
  EXPECT_EQ(textOf(folder / "index-2.html"), "another");
  EXPECT_THAT(textOf(folder / "index.html"), HasSubstr("window.ARCHIVE_BASE"));
}

TEST_F(ChatArchiveWriterTest, SetsAForeignFolderOrLinkAside) {
  fs::create_directories(folder / "index.html/inside");
  write({});
  EXPECT_TRUE(fs::is_directory(folder / "index-2.html/inside"));
  fs::remove(folder / "index.html");
  fs::create_symlink("nowhere", folder / "index.html");
  write({});
  EXPECT_TRUE(fs::is_symlink(folder / "index-3.html"));
}

TEST_F(ChatArchiveWriterTest, SetsFoldersInThePlacesOfTheViewersFilesAside) {
  const fs::path viewer = folder / "messages/_viewer";
  for (const char* name : {"app.js", "app.css", "data/chats.js"}) fs::create_directories(viewer / name / "inside");
  write({});
  for (const char* name : {"app.js", "app.css", "data/chats.js"})
    EXPECT_TRUE(fs::is_regular_file(viewer / name)) << name;
  EXPECT_TRUE(fs::is_directory(viewer / "app-2.js/inside"));
}

TEST_F(ChatArchiveWriterTest, ReplacesAPageOfAnEarlierVersion) {
  Fixture::writeFile(folder / "index.html", "<script>window.ARCHIVE_BASE = \"\";</script>");
  write({});
  EXPECT_FALSE(fs::exists(folder / "index-2.html"));
  EXPECT_THAT(textOf(folder / "index.html"), HasSubstr("messages/_viewer/app.js"));
}

TEST_F(ChatArchiveWriterTest, PutsAllMessagesIntoBlocksToo) {
  write({chat("1", {{.id = "1", .sender = "Ana", .text = "`${price}`"}, {.id = "2", .sender = "Ana", .text = "b"}}),
         chat("empty"), chat("2", {{.id = "3", .sender = "Bea", .text = "c"}})});
  ASSERT_EQ(blockNames().size(), 1U);
  const std::string script = data(blockNames().front());
  EXPECT_EQ(MessageBlocks::fileName(script), blockNames().front());
  EXPECT_EQ(ArchiveScripts::lines(script),
            "\"1\"\t\t\"\\u0060\\u0024{price}\\u0060\"\t{\"me\":false,\"sender\":\"Ana\"}\n"
            "\"2\"\t\t\"b\"\t{\"me\":false,\"sender\":\"Ana\"}\n"
            "\"3\"\t\t\"c\"\t{\"me\":false,\"sender\":\"Bea\"}");
  EXPECT_THAT(data("chats.js"),
              HasSubstr("window.ARCHIVE = {\"blocks\":[{\"chats\":[[\"1\",0,2],[\"2\",0,1]],\"file\":\"" +
                        blockNames().front() + "\"}],\"format\":2,"));
}

TEST_F(ChatArchiveWriterTest, ALongChatSpansBlocks) {
  std::vector<ArchiveMessage> messages;
  for (int i = 0; i < 3000; ++i)
    messages.push_back({.id = std::to_string(i), .sender = "Ana", .text = std::string(1000, 'a')});
  write({chat("short", {{.id = "s", .sender = "Ana", .text = "a"}}), chat("long", messages)});
  std::int64_t next = 0;
  const Json json = archive();
  const auto& blocks = *json.as<Json::Object>()->at("blocks").as<Json::Array>();
  EXPECT_GT(blocks.size(), 2U);
  for (const Json& block : blocks) {
    const auto& parts = *block.as<Json::Object>()->at("chats").as<Json::Array>();
    const auto& part = *parts.back().as<Json::Array>();
    EXPECT_EQ(*part[0].as<std::string>(), "long");
    EXPECT_EQ(*part[1].as<std::int64_t>(), next);
    next += *part[2].as<std::int64_t>();
  }
  EXPECT_EQ(next, 3000);
}

TEST_F(ChatArchiveWriterTest, BlocksThatNoListNamesGoAtTheEnd) {
  write({chat("1", {{.id = "1", .sender = "Ana", .text = "old"}})});
  const std::vector<std::string> old = blockNames();
  {
    ChatArchiveWriter interrupted(
        {.destination = folder.path(), .contentRoot = content, .style = english, .timeZone = {}, .locale = {}});
    interrupted.add(chat("1", {{.id = "1", .sender = "Ana", .text = "new"}}));
  }
  EXPECT_EQ(blockNames(), old) << "what the list names stays until the new list is written";
  write({chat("1", {{.id = "1", .sender = "Ana", .text = "new"}})});
  EXPECT_EQ(blockNames().size(), 1U);
  EXPECT_NE(blockNames(), old);
}

TEST_F(ChatArchiveWriterTest, LeavesFilesThatOnlyResembleABlock) {
  for (const char* name : {"block-mine.js", "block-0123456789abcdef-2.js", "block-0123456789ABCDEF.js"}) {
    Fixture::writeFile(content / "_viewer/data" / name, "somebody's");
    write({chat("1")});
    EXPECT_EQ(data(name), "somebody's");
  }
}

}  // namespace
