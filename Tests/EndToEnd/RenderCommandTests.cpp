#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SampleConversations.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

struct RenderCommandTest : testing::Test {
  RenderCommandTest() {
    Fixture::writeBackup(Fixture::sampleBackup({.messageCount = 300, .mediaCount = 12}), commandLine / "backup");
    EXPECT_EQ(commandLine.run({"export", "backup", "out", "--time-zone", "Asia/Tokyo"}).exitCode, 0);
    fs::remove_all(commandLine / "backup");
  }

  std::map<std::string, Fixture::TreeEntry> tree() const { return Fixture::treeSnapshot(commandLine / "out"); }
  fs::path page() const { return commandLine / "out/index.html"; }

  CommandLine commandLine;
};

TEST_F(RenderCommandTest, MakesPagesAgainAndNothingTwice) {
  const auto before = tree();
  EXPECT_EQ(commandLine.run({"render", "out"}).exitCode, 0);
  EXPECT_EQ(tree(), before);
  fs::remove_all(commandLine / "out/messages/_viewer");
  fs::remove(page());
  const Finished finished = commandLine.run({"render", "out/messages"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, testing::ContainsRegex("[0-9]+ chats · [0-9]+ transcripts · 0 failed\n"));
  EXPECT_THAT(finished.output, HasSubstr("To read the chats, open " + fs::canonical(page()).string()));
  EXPECT_THAT(finished.errors, HasSubstr("ranscripts"));
  EXPECT_EQ(commandLine.run({"verify", "out"}).exitCode, 0);
}

TEST_F(RenderCommandTest, TellsAsJSON) {
  const Json::Object before = commandLine.run({"render", "out", "--json"}).json();
  const std::int64_t transcripts = *before.at("transcriptCount").as<std::int64_t>();
  const Finished finished = commandLine.run({"render", "out", "--json", "--formats", "json"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.errors, IsEmpty());
  const Json::Object object = finished.json();
  EXPECT_GT(*object.at("chatCount").as<std::int64_t>(), 0);
  EXPECT_GT(transcripts, 0);
  EXPECT_EQ(*object.at("transcriptCount").as<std::int64_t>(), transcripts / 2 * 3);
  EXPECT_EQ(object.at("failedCount"), Json(std::int64_t{0}));
  EXPECT_EQ(object.at("failures"), Json(Json::Array()));
  EXPECT_THAT(*object.at("archiveIndexURL").as<std::string>(), testing::EndsWith("out/index.html"));
}

TEST_F(RenderCommandTest, TakesAnotherZoneAndLanguage) {
  const auto before = tree();
  EXPECT_EQ(commandLine.run({"render", "out", "--locale", "pt-BR", "--time-zone", "UTC"}).exitCode, 0);
  EXPECT_NE(tree(), before);
  EXPECT_EQ(commandLine.run({"render", "out", "--time-zone", "Mars/Olympus"}).exitCode, 2);
  EXPECT_EQ(commandLine.run({"render", "out", "--locale", "xx_QQ"}).exitCode, 2);
  EXPECT_EQ(commandLine.run({"render", "out", "--formats", "xml"}).exitCode, 2);
}

TEST_F(RenderCommandTest, SaysWhatFailed) {
  fs::remove(page());
  for (const auto& entry : fs::directory_iterator(commandLine / "out/messages")) {
    const fs::path transcript = entry.path() / "_transcript.txt";
    if (!fs::exists(transcript)) continue;
    fs::remove(transcript);
    fs::create_directories(transcript / "somebody's");
    break;
  }
  const Finished finished = commandLine.run({"render", "out"});
  EXPECT_EQ(finished.exitCode, 3);
  EXPECT_THAT(finished.output, HasSubstr(" · 1 failed\n_transcript.txt — "));
  EXPECT_TRUE(fs::exists(page()));
}

TEST_F(RenderCommandTest, RefusesAFolderWithoutALibrary) {
  fs::remove(commandLine / "out/messages/.tidewell-archive.sqlite");
  const Finished finished = commandLine.run({"render", "out"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, HasSubstr("Export again"));
  EXPECT_EQ(commandLine.run({"render", "nowhere"}).exitCode, 1);
  EXPECT_EQ(commandLine.run({"render"}).exitCode, 2);
}

}  // namespace
