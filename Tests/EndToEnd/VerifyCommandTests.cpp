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

TEST_F(VerifyCommandTest, ComparesWithABackup) {
  const Finished same = commandLine.run({"verify", "out", "--backup", "backup"});
  EXPECT_EQ(same.exitCode, 0) << same.output;
  EXPECT_THAT(same.output, EndsWith("verified · nothing is wrong\n"));
  EXPECT_THAT(same.errors, HasSubstr("Reading chats"));

  Fixture::BackupContents more = Fixture::sampleBackup({.messageCount = 300, .mediaCount = 12});
  more.encryption = Fixture::Encryption{.keyBag = {.password = "correct horse"}};
  more.whatsApp.messages.push_back({.chat = 1, .date = 800'000'000, .text = "written since"});
  Fixture::writeBackup(more, commandLine / "locked");
  const std::vector<std::string> command{"verify", "out", "--backup", "locked", "--password-stdin"};
  const Finished finished = commandLine.run(command, "correct horse\n");
  EXPECT_EQ(finished.exitCode, 4) << finished.errors;
  EXPECT_THAT(finished.output, HasSubstr("” is not in the archive. Export again."));
  EXPECT_THAT(finished.output, EndsWith(" · 1 problem\n"));
  EXPECT_EQ(commandLine.run({"export", "locked", "out", "--password-stdin"}, "correct horse\n").exitCode, 0);
  EXPECT_EQ(commandLine.run(command, "correct horse\n").exitCode, 0);
}

TEST_F(VerifyCommandTest, NeedsThePasswordOfTheBackup) {
  Fixture::BackupContents locked = Fixture::sampleBackup({.messageCount = 300, .mediaCount = 12});
  locked.encryption = Fixture::Encryption{.keyBag = {.password = "correct horse"}};
  Fixture::writeBackup(locked, commandLine / "locked");
  const Finished without = commandLine.run({"verify", "out", "--backup", "locked", "--json"});
  EXPECT_EQ(without.exitCode, 1);
  EXPECT_EQ(without.json().at("error").as<Json::Object>()->at("case"), Json("needsBackupPassword"));
  const Finished wrong = commandLine.run({"verify", "out", "--backup", "locked", "--password-stdin"}, "wrong\n");
  EXPECT_EQ(wrong.exitCode, 1);
  EXPECT_EQ(commandLine.run({"verify", "out", "--backup", "nowhere"}).exitCode, 1);
  EXPECT_EQ(commandLine.run({"verify", "out", "--backup", ""}).exitCode, 2);
}

// What the backup may have lost was not looked for.
TEST_F(VerifyCommandTest, SaysWhereTheBackupCannotBeReadWhole) {
  Fixture::BackupContents both = Fixture::sampleBackup({.messageCount = 300, .mediaCount = 12});
  both.businessApp = Fixture::WhatsAppContents{.domain = std::string(Fixture::businessDomain)};
  Fixture::writeBackup(both, commandLine / "both");
  const Finished finished = commandLine.run({"verify", "out", "--backup", "both", "--json"});
  EXPECT_EQ(finished.exitCode, 3) << finished.output;
  EXPECT_THAT(finished.errors, HasSubstr("Only the messages of WhatsApp"));
  const Json::Object object = finished.json();
  EXPECT_THAT(*object.at("findings").as<Json::Array>(), IsEmpty());
  EXPECT_THAT(*object.at("warnings").as<Json::Array>(), SizeIs(1));
}

}  // namespace
