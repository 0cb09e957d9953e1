#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/CleanUp/DedupeScene.h"
#include "TidewellCore/Archive/ArchiveRelocation.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;
using ArchiveRelocation::ChatReference;
using ExportTest::ana;
using ExportTest::archiveChat;
using ExportTest::bea;
using ExportTest::Tree;

struct ExportDeduperArchiveTest : ExportTest::DedupeScene {
  // The path of every medium that a data file of the archive names, in order.
  std::vector<std::string> shown(const std::string& dataFile) const {
    std::vector<std::string> paths;
    const std::string text = ExportTest::textOf(data / dataFile);
    const Json payload = ChatArchiveJSON::parseAssignment(text, "__CHAT_PAYLOAD").value();
    for (const Json& message : *payload.as<Json::Object>()->at("messages").as<Json::Array>()) {
      const Json::Object& media = *message.as<Json::Object>()->at("media").as<Json::Object>();
      paths.push_back(*media.at("path").as<std::string>());
    }
    return paths;
  }
  std::string allText() const {
    std::string text;
    for (const auto& [path, file] : ExportTest::filesBelow(data)) text += file;
    return text;
  }

  fs::path data = content / "_viewer/data";
};

TEST_F(ExportDeduperArchiveTest, FollowsEachFileToItsNewPlace) {
  write("Ana/a.jpg", "one");
  write("Ana/same.jpg", "same");
  write(ana + "/a.jpg", "two");
  write(ana + "/SAME.jpg", "same");
  write(ana + "/b.jpg", "b");
  writeArchive({archiveChat(ana, "Ana", {"Ana/a.jpg", "Ana/same.jpg"}),
                archiveChat(ana, ana, {ana + "/a.jpg", ana + "/SAME.jpg", ana + "/b.jpg", ana + "/gone.jpg"})});
  remember({{ana, "Ana"}});
  EXPECT_TRUE(dedupe(true).archiveUpdated);
  EXPECT_THAT(ArchiveRelocation::loadChats(data), ElementsAre(ChatReference{ana, "Ana"}, ChatReference{ana, "Ana"}));
  EXPECT_THAT(shown("chat-5511900001111_s.whatsapp.netAna.js"), ElementsAre("Ana/a.jpg", "Ana/same.jpg"));
  EXPECT_THAT(shown("chat-" + archiveChat(ana, ana).id + ".js"),
              ElementsAre("Ana/a-2.jpg", "Ana/same.jpg", "Ana/b.jpg", ana + "/gone.jpg"));
  EXPECT_FALSE(dedupe(true).archiveUpdated);
}

TEST_F(ExportDeduperArchiveTest, KnowsAPathInWhateverSpelling) {
  write("Ana/x", "x");
  write("José/É.jpg", "1");
  write("Ana/É.jpg", "2");
  writeArchive({archiveChat(ana, "Ana", {"Ana/É.jpg", "JOSE\u0301/e\u0301.JPG"}), archiveChat(ana, "JOSE\u0301")});
  remember({{ana, "Ana"}});
  EXPECT_TRUE(dedupe(true).archiveUpdated);
  EXPECT_THAT(shown("chat-" + archiveChat(ana, "Ana").id + ".js"), ElementsAre("Ana/É.jpg", "Ana/É-2.jpg"));
  EXPECT_THAT(ArchiveRelocation::loadChats(data), ElementsAre(ChatReference{ana, "Ana"}, ChatReference{ana, "Ana"}));
}

TEST_F(ExportDeduperArchiveTest, TellsTwoFoldersOfOneKeyApart) {
  write("Ana/a.jpg", "1");
  write("ANA/a.jpg", "2");
  writeArchive({archiveChat(ana, "Ana", {"Ana/a.jpg", "ANA/a.jpg"}), archiveChat(ana, "ANA")});
  remember({{ana, "Ana"}});
  if (!fs::exists(content / "Ana/a.jpg") || ExportTest::textOf(content / "Ana/a.jpg") == "2") {
    GTEST_SKIP() << "This file system ignores letter case.";
  }
  EXPECT_EQ(dedupe(true).movedUniqueCount, 1);
  EXPECT_THAT(shown("chat-" + archiveChat(ana, "Ana").id + ".js"), ElementsAre("Ana/a.jpg", "Ana/a-2.jpg"));
}

TEST_F(ExportDeduperArchiveTest, NothingPointsAtTheRemovedFolder) {
  write("Ana/a", "a");
  write("Old name/a", "a");
  write("Old name/b", "b");
  writeArchive({archiveChat(ana, "Old name", {"Old name/a", "Old name/b"}), archiveChat(bea, "Bea", {"Bea/a"})});
  remember({{ana, "Ana"}});
  EXPECT_TRUE(dedupe(true).archiveUpdated);
  EXPECT_THAT(allText(), Not(HasSubstr("\"path\":\"Old name/")));
  EXPECT_THAT(allText(), Not(HasSubstr("\"folder\":\"Old name\"")));
}

TEST_F(ExportDeduperArchiveTest, ADamagedArchiveTiesNothing) {
  write("Ana/a", "a");
  write("Anna/a", "a");
  writeArchive({archiveChat(ana, "Anna", {"Anna/a"})});
  remember({{ana, "Ana"}});
  Fixture::writeFile(data / "chats.js", "window.CHATS = [{");
  EXPECT_EQ(dedupe(true), DedupeSummary{.dryRun = false});
  write(ana + "/a", "a");
  const Tree before = ExportTest::filesBelow(data);
  const DedupeSummary summary = dedupe(true);
  EXPECT_EQ(summary.removedFolderCount, 1);
  EXPECT_FALSE(summary.archiveUpdated);
  EXPECT_EQ(ExportTest::filesBelow(data), before);
}

TEST_F(ExportDeduperArchiveTest, WorksOnAFlatExport) {
  content = destination;
  data = destination / "_viewer/data";
  fs::remove_all(destination);
  write("Ana/a", "a");
  write(ana + "/a", "a");
  writeArchive({archiveChat(ana, ana, {ana + "/a"})});
  remember({{ana, "Ana"}});
  EXPECT_TRUE(dedupe(true).archiveUpdated);
  EXPECT_THAT(shown("chat-" + archiveChat(ana, ana).id + ".js"), ElementsAre("Ana/a"));
}

// A real export, one of whose folders was doubled by hand; the next one finds nothing to do.
TEST_F(ExportDeduperArchiveTest, AnExportAfterAMergeCopiesNothing) {
  const ExportTest::Scene scene;
  scene.run();
  const Tree before = ExportTest::filesBelow(scene.destination);
  fs::copy(scene.content / "Ana", scene.content / ana);
  EXPECT_EQ(Exporter().dedupe(scene.destination, true).removedFolderCount, 1);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
  EXPECT_EQ(scene.run().copiedCount, 0);
  EXPECT_EQ(Exporter().dedupe(scene.destination, false), DedupeSummary{});
}

}  // namespace
