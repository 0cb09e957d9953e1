#include "TidewellCore/Archive/ArchiveRelocation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "Tests/CleanUp/DedupeScene.h"
#include "Tests/Support/Unprivileged.h"
#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/MessageBlocks.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

namespace fs = std::filesystem;
using ArchiveRelocation::ChatReference;
using ExportTest::archiveChat;
using ExportTest::Tree;
using Places = std::map<std::string, std::string>;

struct ArchiveRelocationTest : ExportTest::DedupeScene {
  bool rewrite(const Places& files, const Places& folders = {}) const {
    const auto in = [](const Places& places) {
      return [&places](const std::string& place) {
        const auto found = places.find(place);
        return found == places.end() ? std::nullopt : std::optional(found->second);
      };
    };
    return ArchiveRelocation::rewrite(data, {.folder = in(folders), .file = in(files)});
  }
  Tree files() const { return ExportTest::filesBelow(data); }
  std::string list() const { return ExportTest::textOf(data / "chats.js"); }

  fs::path data = content / "_viewer/data";
};

TEST_F(ArchiveRelocationTest, ReadsTheFoldersOfTheChatList) {
  EXPECT_THAT(ArchiveRelocation::loadChats(data), IsEmpty());
  Fixture::writeFile(data / "chats.js",
                     "window.ARCHIVE = {};\nwindow.CHATS = [{\"jid\":\"1@x\",\"folder\":\"Ana\"},3,{\"jid\":\"2@x\"},"
                     "{\"jid\":\"\",\"folder\":\"A\"},{\"jid\":\"3@x\",\"folder\":\"../up\"},{\"jid\":4,"
                     "\"folder\":\"B\"},{\"jid\":\"5@x\",\"folder\":\"\"},{\"jid\":\"1@x\",\"folder\":\"Eva\"}];");
  EXPECT_THAT(ArchiveRelocation::loadChats(data),
              ElementsAre(ChatReference{"1@x", "Ana"}, ChatReference{"1@x", "Eva"}));
  for (const char* text : {"", "window.CHATS = {};", "window.CHATS = [", "no script"}) {
    Fixture::writeFile(data / "chats.js", text);
    EXPECT_THAT(ArchiveRelocation::loadChats(data), IsEmpty()) << text;
  }
}

// The same archive, written with the new places from the start.
TEST_F(ArchiveRelocationTest, GivesTheArchiveThatWouldHaveBeenWritten) {
  const auto writeWith = [this](const std::string& place, const std::vector<std::string>& moved) {
    fs::remove_all(data);
    std::vector<std::string> first{"Ana/a", "Ana/b<c>.jpg"};
    first.insert(first.end(), moved.begin(), moved.end());
    ArchiveChat second = archiveChat("1@lid", place, moved);
    second.id = "other";
    second.name = "Ana";
    for (ArchiveMessage& message : second.messages) message.text = "`$\u2028\\";
    ArchiveChat chat = archiveChat("1@x", "Ana", first);
    for (ArchiveMessage& message : chat.messages) message.text = "</script>";
    writeArchive({chat, second, archiveChat("2@x", "Bea", {"Bea/a"})});
  };
  writeWith("Ana", {"Ana/a-2.jpg", "Ana/“b”.jpg"});
  const Tree expected = files();
  writeWith("1@lid", {"1@lid/a.jpg", "1@lid/“b”.jpg"});
  ASSERT_NE(files(), expected);
  EXPECT_TRUE(rewrite({{"1@lid/a.jpg", "Ana/a-2.jpg"}, {"1@lid/“b”.jpg", "Ana/“b”.jpg"}}, {{"1@lid", "Ana"}}));
  EXPECT_EQ(files(), expected);
}

TEST_F(ArchiveRelocationTest, ChangesNothingWhenNothingMoved) {
  writeArchive({archiveChat("1@x", "Ana", {"Ana/a"})});
  const auto before = Fixture::treeSnapshot(data);
  EXPECT_FALSE(rewrite({{"Ana/b", "Eva/b"}}, {{"Eva", "Ana"}}));
  EXPECT_EQ(Fixture::treeSnapshot(data), before);
}

TEST_F(ArchiveRelocationTest, LeavesTheFilesOfOtherChatsAlone) {
  writeArchive({archiveChat("1@x", "Ana", {"Ana/a"}), archiveChat("2@x", "Bea", {"Bea/b"})});
  const auto before = Fixture::treeSnapshot(data);
  EXPECT_TRUE(rewrite({{"Ana/a", "Eva/a"}}));
  EXPECT_EQ(Fixture::treeSnapshot(data).at("chat-2_xBea.js"), before.at("chat-2_xBea.js"));
}

TEST_F(ArchiveRelocationTest, RenamesAnEntryOnlyWhenItHadTheFilesName) {
  ArchiveChat chat = archiveChat("1@x", "Ana", {"Ana/a.jpg", "Ana/b.jpg"});
  chat.messages[1].media->fileName = "Letter.jpg";
  writeArchive({chat});
  EXPECT_TRUE(rewrite({{"Ana/a.jpg", "Eva/a-2.jpg"}, {"Ana/b.jpg", "Eva/b-2.jpg"}}));
  const std::string text = ExportTest::textOf(data / "chat-1_xAna.js");
  EXPECT_THAT(text, HasSubstr(R"("name":"a-2.jpg","path":"Eva/a-2.jpg")"));
  EXPECT_THAT(text, HasSubstr(R"("name":"Letter.jpg","path":"Eva/b-2.jpg")"));
}

TEST_F(ArchiveRelocationTest, KeepsWhatItDoesNotKnow) {
  Fixture::writeFile(data / "chats.js",
                     "window.CHATS = [{\"folder\":\"A\",\"jid\":\"1@x\",\"new\":[1.5,null],\"file\":\"own.js\"},7];\n"
                     "window.MORE = 1;\nwindow.ARCHIVE = {\"blocks\":[{\"file\":\"block-1.js\",\"chats\":[],"
                     "\"size\":3},null],\"later\":true};\n// the end\n");
  const std::string message = R"({"id":"1","media":{"path":"A/a","width":3},"reactions":["+"]})";
  const std::string newMessage = R"({"id":"1","media":{"path":"B/b","width":3},"reactions":["+"]})";
  Fixture::writeFile(data / "own.js", "window.__CHAT_PAYLOAD = { \"a\" : [ ] , \"messages\" : [ " + message +
                                          " , {\"z\" : 1, \"path\":0} ], \"version\":2 } ;");
  Fixture::writeFile(data / "block-1.js", ArchiveScripts::block("{}\n" + message));
  EXPECT_TRUE(rewrite({{"A/a", "B/b"}}, {{"A", "B"}}));
  EXPECT_EQ(ExportTest::textOf(data / "own.js"), "window.__CHAT_PAYLOAD = { \"a\" : [ ] , \"messages\" : [ " +
                                                     newMessage + " , {\"z\" : 1, \"path\":0} ], \"version\":2 } ;");
  const std::string block = ArchiveScripts::block("{}\n" + newMessage);
  const std::string name = MessageBlocks::fileName(block);
  EXPECT_EQ(ExportTest::textOf(data / name), block);
  EXPECT_FALSE(fs::exists(data / "block-1.js"));
  EXPECT_EQ(list(),
            "window.CHATS = [{\"file\":\"own.js\",\"folder\":\"B\",\"jid\":\"1@x\",\"new\":[1.5,null]},7];\n"
            "window.MORE = 1;\nwindow.ARCHIVE = {\"blocks\":[{\"chats\":[],\"file\":\"" +
                name + "\",\"size\":3},null],\"later\":true};\n// the end\n");
}

TEST_F(ArchiveRelocationTest, KeepsWhatItDoesNotKnowInTheLinesOfToday) {
  const std::string others = "\t1\t\"path, \\\"media\\\"\"\t{\"a\":{\"path\":\"A/a\"},\"media\":{\"path\":\"";
  const std::string script = ArchiveScripts::block("\"1\"\t\t\t{}\n\"2\"" + others + "A/a\"},\"z\":[1.5,null]}");
  Fixture::writeFile(data / "chats.js",
                     "window.ARCHIVE = {\"blocks\":[{\"file\":\"block-1.js\"}],\"format\":2};\nwindow.CHATS = [];\n");
  Fixture::writeFile(data / "block-1.js", script);
  EXPECT_TRUE(rewrite({{"A/a", "B/b"}}));
  const std::string moved = ArchiveScripts::block("\"1\"\t\t\t{}\n\"2\"" + others + "B/b\"},\"z\":[1.5,null]}");
  EXPECT_EQ(ExportTest::textOf(data / MessageBlocks::fileName(moved)), moved);
}

TEST_F(ArchiveRelocationTest, LeavesBlocksOfAFormatThatIsNotKnown) {
  Fixture::writeFile(data / "chats.js", "window.ARCHIVE = {\"blocks\":[{\"file\":\"block-1.js\"}],\"format\":3};\n");
  Fixture::writeFile(data / "block-1.js", ArchiveScripts::block(R"({"media":{"path":"A/a"}})"));
  EXPECT_FALSE(rewrite({{"A/a", "B/b"}}));
  EXPECT_TRUE(fs::exists(data / "block-1.js"));
}

TEST_F(ArchiveRelocationTest, RewritesDataFilesThatNoListNames) {
  writeArchive({archiveChat("2@x", "Bea")});
  Fixture::writeFile(data / "chat-old.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"media":{"path":"A/a"}}]};)");
  EXPECT_TRUE(rewrite({{"A/a", "B/b"}}));
  EXPECT_THAT(ExportTest::textOf(data / "chat-old.js"), HasSubstr("\"B/b\""));
}

TEST_F(ArchiveRelocationTest, LeavesWhatItCannotRead) {
  writeArchive({archiveChat("1@x", "A", {"A/a"}), archiveChat("2@x", "B", {"A/a"})});
  const std::string half = R"(window.__CHAT_PAYLOAD = {"messages":[{"media":{"path":"A/a")";
  Fixture::writeFile(data / "chat-1_xA.js", half);
  Fixture::writeFile(data / "chat-more.js", R"(window.__CHAT_PAYLOAD = {"messages":[{"media":{"path":"A/a"},}]};)");
  fs::create_symlink("chat-1_xA.js", data / "chat-link.js");
  EXPECT_TRUE(rewrite({{"A/a", "B/b"}}));
  EXPECT_EQ(ExportTest::textOf(data / "chat-1_xA.js"), half);
  EXPECT_THAT(ExportTest::textOf(data / "chat-more.js"), HasSubstr("\"A/a\""));
  EXPECT_THAT(ExportTest::textOf(data / "chat-2_xB.js"), HasSubstr("\"B/b\""));
}

TEST_F(ArchiveRelocationTest, AChatListThatCannotBeReadLeavesAllAsItIs) {
  writeArchive({archiveChat("1@x", "A", {"A/a"})});
  fs::remove(data / "chats.js");
  const auto before = Fixture::treeSnapshot(data);
  EXPECT_FALSE(rewrite({{"A/a", "B/b"}}, {{"A", "B"}}));
  EXPECT_EQ(Fixture::treeSnapshot(data), before);
}

// Beside those that the list names there may be more, which must follow as well.
TEST_F(ArchiveRelocationTest, AFolderThatCannotBeListedIsAFailure) {
  writeArchive({archiveChat("1@x", "A", {"A/a"})});
  fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::others_exec);
  fs::permissions(data, fs::perms::owner_all | fs::perms::others_write | fs::perms::others_exec);
  enum { passed, failed };
  const int result = Fixture::asUnprivilegedUser([&] {
    try {
      rewrite({{"A/a", "B/b"}});
      return passed;
    } catch (const fs::filesystem_error&) {
      return failed;
    }
  });
  EXPECT_EQ(result, failed);
}

TEST_F(ArchiveRelocationTest, OpensNoFileOutsideItsFolder) {
  const std::string outside = R"(window.__CHAT_PAYLOAD = {"messages":[{"media":{"path":"A/a"}}]};)";
  Fixture::writeFile(content / "_viewer/outside.js", outside);
  const std::string block = ArchiveScripts::block(R"({"media":{"path":"A/a"}})");
  Fixture::writeFile(content / "_viewer/block.js", block);
  Fixture::writeFile(data / "chats.js",
                     "window.CHATS = [{\"file\":\"../outside.js\"}];\n"
                     "window.ARCHIVE = {\"blocks\":[{\"file\":\"../block.js\"}]};\n");
  EXPECT_FALSE(rewrite({{"A/a", "B/b"}}));
  EXPECT_EQ(ExportTest::textOf(content / "_viewer/outside.js"), outside);
  EXPECT_EQ(ExportTest::textOf(content / "_viewer/block.js"), block);
}

}  // namespace
