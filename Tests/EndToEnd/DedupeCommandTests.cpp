#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/EndToEnd/CommandLine.h"
#include "TidewellCore/Destination/FolderManifest.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;
using Fixture::treeSnapshot;

const std::string jid = "5511900001111@s.whatsapp.net";

struct DedupeCommandTest : testing::Test {
  DedupeCommandTest() {
    const fs::path content = commandLine / "out/messages";
    for (const std::string& folder : {std::string("Ana"), jid}) {
      Fixture::writeFile(content / folder / "same.jpg", "0123456789");
      Fixture::writeFile(content / folder / "other.jpg", folder);
    }
    fs::create_directory(content / "_viewer");
    FolderManifest::save(content, {{jid, "Ana"}});
  }

  CommandLine commandLine;
};

TEST_F(DedupeCommandTest, ReportsWithoutChangingAnything) {
  const auto before = treeSnapshot(commandLine / "out");
  const Finished finished = commandLine.run({"dedupe", "out"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.output,
            "Duplicate                     Merged into  Duplicate files  Other files      Size\n"
            "5511900001111@s.whatsapp.net  Ana                        1            1  10 bytes\n"
            "1 duplicate folder can be merged, freeing 10 bytes. Nothing was changed; --apply merges them.\n");
  EXPECT_THAT(finished.errors, IsEmpty());
  EXPECT_EQ(treeSnapshot(commandLine / "out"), before);
}

TEST_F(DedupeCommandTest, MergesWhenAsked) {
  const Finished finished = commandLine.run({"dedupe", "--apply", "out"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output,
              HasSubstr("\n1 duplicate folder merged · 1 duplicate file removed · 1 other file moved · "
                        "1 folder removed · 10 bytes freed\n"));
  EXPECT_FALSE(fs::exists(commandLine / "out/messages" / jid));
  EXPECT_TRUE(fs::exists(commandLine / "out/messages/Ana/other-2.jpg"));
  EXPECT_EQ(commandLine.run({"dedupe", "--apply", "out"}).output, "There are no duplicate folders to merge.\n");
}

TEST_F(DedupeCommandTest, GivesTheFieldsOfTheSummaryAsJson) {
  for (const bool apply : {false, true}) {
    const Finished finished = commandLine.run({"dedupe", "out", "--json", apply ? "--apply" : "--json"});
    EXPECT_EQ(finished.exitCode, 0);
    const std::string counts = apply ? R"("deletedDuplicateCount":1,"dryRun":false,"mergedFolderCount":1,)"
                                       R"("movedUniqueCount":1,)"
                                     : R"("deletedDuplicateCount":0,"dryRun":true,"mergedFolderCount":1,)"
                                       R"("movedUniqueCount":0,)";
    EXPECT_EQ(finished.output,
              std::string(R"({"archiveUpdated":false,"bytesReclaimed":)") + (apply ? "10," : "0,") + counts +
                  R"("pairs":[{"bytes":10,"canonicalFolder":"Ana","duplicateFileCount":1,"duplicateFolder":")" + jid +
                  R"(","jid":")" + jid + R"(","uniqueFileCount":1}],"removedFolderCount":)" + (apply ? "1" : "0") +
                  R"(,"skippedAmbiguousCount":0,"warnings":[]})" + "\n");
  }
}

TEST_F(DedupeCommandTest, TellsWhatItLeftAlone) {
  FolderManifest::save(commandLine / "out/messages", {{jid, "Ana"}, {"5511900002222@s.whatsapp.net", "Ana"}});
  EXPECT_EQ(commandLine.run({"dedupe", "out", "--apply"}).output,
            "There are no duplicate folders to merge.\n"
            "2 folders left alone: which chat each belongs to is not certain.\n");
}

TEST_F(DedupeCommandTest, FailsWithoutAnExport) {
  const Finished finished = commandLine.run({"dedupe", "nowhere", "--apply"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_THAT(finished.errors, StartsWith("There is no folder at “"));
  EXPECT_FALSE(fs::exists(commandLine / "nowhere"));
  const Json::Object object = commandLine.run({"dedupe", "home", "--json"}).json();
  EXPECT_EQ(*object.at("error").as<Json::Object>()->at("case").as<std::string>(), "ioFailure");
  EXPECT_EQ(commandLine.run({"dedupe"}).exitCode, 2);
  EXPECT_EQ(commandLine.run({"dedupe", "out", "--kinds", "photos"}).exitCode, 2);
}

}  // namespace
