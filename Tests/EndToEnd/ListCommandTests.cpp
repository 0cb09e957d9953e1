#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

void writeTwoBackups(const CommandLine& commandLine) {
  Fixture::writeBackup({.deviceName = "Old phone", .backupTime = 1'600'000'000}, commandLine / "root/older");
  Fixture::writeBackup({.deviceName = "New phone", .backupTime = 1'714'564'800, .encryption = Fixture::Encryption{}},
                       commandLine / "root/newer");
}

TEST(ListCommand, SaysWhenThereIsNoBackupFolder) {
  const Finished finished = CommandLine().run({"list"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, HasSubstr("There is no backup folder at "));
  EXPECT_THAT(finished.output, HasSubstr("Library/Application Support/MobileSync/Backup"));
}

TEST(ListCommand, ListsBackupsNewestFirstInAlignedColumns) {
  const CommandLine commandLine;
  writeTwoBackups(commandLine);
  const Finished finished = commandLine.run({"list", "--root", "root"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.output.substr(0, finished.output.find('/')),
            "Device     iOS     Date              Encrypted  Folder\n"
            "New phone  17.5.1  2024-05-01 12:00  yes        ");
  EXPECT_THAT(finished.output, HasSubstr("\nOld phone  17.5.1  2020-09-13 12:26  no         "));
}

TEST(ListCommand, GivesTheFieldsOfEachBackupAsJson) {
  const CommandLine commandLine;
  writeTwoBackups(commandLine);
  const Json::Object object = commandLine.run({"list", "--root", "root", "--json", "--sizes"}).json();
  EXPECT_EQ(*object.at("access").as<std::string>(), "readable");
  const Json::Array& backups = *object.at("backups").as<Json::Array>();
  ASSERT_EQ(backups.size(), 2U);
  const Json::Object& newest = *backups[0].as<Json::Object>();
  EXPECT_EQ(*newest.at("deviceName").as<std::string>(), "New phone");
  EXPECT_EQ(*newest.at("backupDate").as<std::string>(), "2024-05-01T12:00:00Z");
  EXPECT_TRUE(*newest.at("isEncrypted").as<bool>());
  EXPECT_EQ(*newest.at("url").as<std::string>(), (commandLine / "root/newer").string());
  EXPECT_GT(*newest.at("byteCount").as<std::int64_t>(), 0);
  for (const char* key : {"productType", "iosVersion", "uniqueIdentifier"}) EXPECT_TRUE(newest.contains(key)) << key;
}

TEST(ListCommand, LeavesAbsentFieldsOutOfJson) {
  const CommandLine commandLine;
  writeTwoBackups(commandLine);
  std::filesystem::remove(commandLine / "root/newer/Info.plist");
  std::filesystem::remove(commandLine / "root/newer/Status.plist");
  const Json::Object object = commandLine.run({"list", "--root", "root", "--json"}).json();
  const Json::Object& undated = *object.at("backups").as<Json::Array>()->at(1).as<Json::Object>();
  EXPECT_EQ(undated.size(), 2U);
  EXPECT_TRUE(undated.contains("url") && undated.contains("isEncrypted"));
}

TEST(ListCommand, NamesTheFoldersThatAreNoReadableBackups) {
  const CommandLine commandLine;
  writeTwoBackups(commandLine);
  Fixture::writeFile(commandLine / "root/newer/Manifest.plist", "");
  const Finished finished = commandLine.run({"list", "--root", "root"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, Not(HasSubstr("New phone")));
  EXPECT_THAT(finished.errors, HasSubstr("“newer” is no backup that can be read: "));
}

TEST(ListCommand, KeepsControlCharactersOfADeviceNameFromTheTerminal) {
  const CommandLine commandLine;
  Fixture::writeBackup({.deviceName = "Phone\tof A"}, commandLine / "root/device");
  EXPECT_THAT(commandLine.run({"list", "--root", "root"}).output, HasSubstr("Phone\uFFFDof A"));
}

}  // namespace
