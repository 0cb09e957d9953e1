#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SampleConversations.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

struct VerifyCommandTest : testing::Test {
  VerifyCommandTest() {
    Fixture::writeBackup(Fixture::sampleBackup({.messageCount = 300, .mediaCount = 12}), commandLine / "backup");
    EXPECT_EQ(commandLine.run({"export", "backup", "out"}).exitCode, 0);
  }

  fs::path photo() const {
    for (const auto& entry : fs::recursive_directory_iterator(commandLine / "out/messages")) {
      if (entry.path().extension() == ".jpg" && entry.path().parent_path().filename() != "avatars") return entry.path();
    }
    return {};
  }

  CommandLine commandLine;
};

TEST_F(VerifyCommandTest, SaysThatNothingIsWrong) {
  const Finished finished = commandLine.run({"verify", "out"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, EndsWith("verified · nothing is wrong\n"));
  EXPECT_THAT(finished.errors, HasSubstr("Verifying"));
  EXPECT_EQ(commandLine.run({"verify", "out/messages"}).exitCode, 0);
}

TEST_F(VerifyCommandTest, EndsWithFourAndSaysWhatToDo) {
  const std::string name = photo().filename().string();
  fs::remove(photo());
  const Finished finished = commandLine.run({"verify", "out"});
  EXPECT_EQ(finished.exitCode, 4);
  EXPECT_THAT(finished.output, HasSubstr(name + "” is missing. Export again"));
  EXPECT_THAT(finished.output, EndsWith(" · 1 problem\n"));

  const Finished asJSON = commandLine.run({"verify", "out", "--json"});
  EXPECT_EQ(asJSON.exitCode, 4);
  EXPECT_THAT(asJSON.errors, IsEmpty());
  const Json::Object object = asJSON.json();
  const auto* findings = object.at("findings").as<Json::Array>();
  ASSERT_TRUE(findings != nullptr);
  ASSERT_THAT(*findings, SizeIs(1));
  EXPECT_EQ((*findings)[0].as<Json::Object>()->at("kind"), Json("missing"));
  EXPECT_GT(*object.at("messageCount").as<std::int64_t>(), 0);

  EXPECT_EQ(commandLine.run({"export", "backup", "out"}).exitCode, 0);
  EXPECT_EQ(commandLine.run({"verify", "out"}).exitCode, 0);
}

TEST_F(VerifyCommandTest, RefusesAFolderWithoutAnExport) {
  const Finished finished = commandLine.run({"verify", "backup"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, HasSubstr("no export"));
  EXPECT_EQ(commandLine.run({"verify", "nowhere"}).exitCode, 1);
  EXPECT_EQ(commandLine.run({"verify"}).exitCode, 2);
}

}  // namespace
