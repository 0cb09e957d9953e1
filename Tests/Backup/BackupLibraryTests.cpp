#include "TidewellCore/Backup/BackupLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cerrno>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Unprivileged.h"
#include "TidewellCore/Platform/RawValue.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

// A folder of backups that consist of their property lists, which is all that a list looks at.
class BackupLibraryTest : public testing::Test {
 protected:
  void add(const std::string& name, PlistDictionary info, bool withIndex = true) {
    writeFile(root_ / name / "Manifest.plist", binaryPlist(PlistDictionary{{"IsEncrypted", false}}));
    if (!info.empty()) writeFile(root_ / name / "Info.plist", binaryPlist(std::move(info)));
    if (withIndex) writeFile(root_ / name / "Manifest.db", "an index");
  }

  std::vector<std::string> folderNames() const {
    std::vector<std::string> names;
    for (const DiscoveredBackup& backup : BackupLibrary::diagnose(root_).backups) {
      names.push_back(backup.info.url.filename().string());
    }
    return names;
  }

  TemporaryDirectory folder_;
  fs::path root_ = folder_ / "Backup";
};

PlistDictionary info(double date, const std::string& deviceName = "") {
  return {{"Last Backup Date", PlistDate{date}}, {"Device Name", deviceName}};
}

// Lets everybody pass through a test's folder, whoever made it.
void openToAll(const fs::path& folder) { fs::permissions(folder, fs::perms(0755)); }

BackupAccess accessAsUnprivilegedUser(const fs::path& root) {
  return static_cast<BackupAccess>(asUnprivilegedUser([&] { return static_cast<int>(BackupLibrary::access(root)); }));
}

TEST_F(BackupLibraryTest, ListsRealBackupsAndLeavesThemUntouched) {
  writeBackup({}, root_ / "plain");
  writeBackup({.backupTime = 1'717'243'201, .encryption = Encryption{}}, root_ / "encrypted");
  const auto before = treeSnapshot(root_);
  EXPECT_THAT(folderNames(), ElementsAre("encrypted", "plain"));
  EXPECT_EQ(treeSnapshot(root_), before);
}

TEST_F(BackupLibraryTest, AnAbsentRootBelowAListableParentIsMissing) {
  EXPECT_EQ(BackupLibrary::diagnose(root_), (BackupLibrarySnapshot{.access = BackupAccess::missing}));
}

TEST_F(BackupLibraryTest, ARootBelowAnAbsentParentIsMissing) {
  EXPECT_EQ(BackupLibrary::access(folder_ / "absent" / "Backup"), BackupAccess::missing);
}

TEST_F(BackupLibraryTest, ARootThatIsNoFolderIsMissing) {
  writeFile(root_, "text");
  EXPECT_EQ(BackupLibrary::access(root_), BackupAccess::missing);
}

TEST_F(BackupLibraryTest, ARootThatMayNotBeListedIsDenied) {
  add("device", info(1));
  openToAll(folder_.path());
  EXPECT_EQ(accessAsUnprivilegedUser(root_), BackupAccess::readable);
  fs::permissions(root_, fs::perms(0));
  EXPECT_EQ(accessAsUnprivilegedUser(root_), BackupAccess::denied);
  const int count = asUnprivilegedUser([&] { return static_cast<int>(BackupLibrary::diagnose(root_).backups.size()); });
  EXPECT_EQ(count, 0);
  fs::permissions(root_, fs::perms(0700));
}

TEST_F(BackupLibraryTest, ARootBelowAFolderThatMayNotBeListedIsDenied) {
  add("device", info(1));
  openToAll(folder_.path());
  const fs::path closed = folder_ / "closed";
  fs::create_directory(closed);
  fs::permissions(closed, fs::perms(0));
  EXPECT_EQ(accessAsUnprivilegedUser(closed / "Backup"), BackupAccess::denied);
  EXPECT_EQ(accessAsUnprivilegedUser(closed / "Backup/"), BackupAccess::denied) << "with a slash at its end";
  fs::permissions(closed, fs::perms(0700));
}

TEST_F(BackupLibraryTest, OnlyMissingPermissionsArePermissionErrors) {
  EXPECT_TRUE(BackupLibrary::isPermissionError({EACCES, std::generic_category()}));
  EXPECT_TRUE(BackupLibrary::isPermissionError({EPERM, std::system_category()}));
  EXPECT_FALSE(BackupLibrary::isPermissionError({ENOENT, std::generic_category()}));
  EXPECT_FALSE(BackupLibrary::isPermissionError({EIO, std::system_category()}));
  EXPECT_FALSE(BackupLibrary::isPermissionError({}));
}

TEST_F(BackupLibraryTest, AChosenDeviceFolderIsItsOnlyEntry) {
  add("device", info(1, "Ana"));
  root_ /= "device";
  EXPECT_THAT(folderNames(), ElementsAre("device"));
}

TEST_F(BackupLibraryTest, ADamagedChosenDeviceFolderGivesAnEmptyList) {
  writeFile(root_ / "Manifest.plist", "damaged");
  const BackupLibrarySnapshot snapshot = BackupLibrary::diagnose(root_);
  EXPECT_EQ(snapshot.access, BackupAccess::readable);
  EXPECT_THAT(snapshot.backups, IsEmpty());
  EXPECT_EQ(snapshot.unreadable.size(), 1U);
}

TEST_F(BackupLibraryTest, TheFoldersOfADeviceFolderAreNoUnreadableBackups) {
  add("device", info(1, "Ana"));
  fs::create_directories(root_ / "device" / "3d");
  EXPECT_THAT(BackupLibrary::diagnose(root_ / "device").unreadable, IsEmpty());
}

TEST_F(BackupLibraryTest, DeviceFoldersBelowTheRootComeBeforeTheRootItself) {
  add("device", info(1));
  add(".", info(2));
  EXPECT_THAT(folderNames(), ElementsAre("device"));
}

TEST_F(BackupLibraryTest, FoldersThatAreNoBackupsAreNamedApart) {
  add("good", info(1));
  add("without index", info(2), /*withIndex=*/false);
  writeFile(root_ / "no dictionary" / "Manifest.plist", binaryPlist(PlistArray{}));
  writeFile(root_ / "half written" / "Manifest.plist", "bplist00");
  writeFile(root_ / "damaged info" / "Manifest.db", "an index");
  writeFile(root_ / "damaged info" / "Manifest.plist", binaryPlist(PlistDictionary{{"IsEncrypted", false}}));
  writeFile(root_ / "damaged info" / "Info.plist", "damaged");
  writeFile(root_ / "foreign" / "file", "text");
  writeFile(root_ / "file", "text");
  fs::create_directories(root_ / "fifo");
  ASSERT_EQ(::mkfifo((root_ / "fifo" / "Manifest.plist").c_str(), 0600), 0);
  fs::create_directories(root_ / ".hidden");
  EXPECT_THAT(folderNames(), ElementsAre("good"));
  std::vector<std::string> unreadable;
  for (const UnreadableFolder& each : BackupLibrary::diagnose(root_).unreadable) {
    unreadable.push_back(each.name);
    EXPECT_FALSE(each.reason.empty()) << each.name;
  }
  EXPECT_THAT(unreadable,
              ElementsAre("damaged info", "fifo", "foreign", "half written", "no dictionary", "without index"));
}

TEST_F(BackupLibraryTest, HiddenFoldersAreNeverLookedAt) {
  add(".hidden", info(1));
  EXPECT_THAT(folderNames(), IsEmpty());
}

TEST_F(BackupLibraryTest, NewestBackupsComeFirstAndUndatedOnesLast) {
  add("undated", {});
  add("old", info(600000000));
  add("new", info(700000000.5));
  add("newish", info(700000000));
  add("before 2001", info(-1));
  EXPECT_THAT(folderNames(), ElementsAre("new", "newish", "old", "before 2001", "undated"));
}

TEST_F(BackupLibraryTest, BackupsOfOneDateAreOrderedByTheirNames) {
  add("1", info(5, "Zoe"));
  add("2", info(5, "Ana"));
  add("M", info(5));
  add("3", info(5, "ana"));
  EXPECT_THAT(folderNames(), ElementsAre("2", "M", "1", "3"));
}

TEST_F(BackupLibraryTest, BackupsAlikeInDateAndNameKeepTheListingsOrder) {
  for (const char* name : {"b", "a", "c"}) add(name, info(5, "Ana"));
  EXPECT_THAT(folderNames(), ElementsAre("a", "b", "c"));
}

TEST_F(BackupLibraryTest, SizesAreUnknownUntilTheyAreMeasured) {
  add("device", info(5, "Ana"));
  const BackupLibrarySnapshot snapshot = BackupLibrary::diagnose(root_);
  ASSERT_EQ(snapshot.backups.size(), 1U);
  EXPECT_EQ(snapshot.backups[0].byteCount, std::nullopt);
  EXPECT_EQ(snapshot.backups[0].id(), (root_ / "device").string());
}

TEST_F(BackupLibraryTest, MeasuresEveryRegularFileBelowAFolder) {
  writeFile(root_ / "a", Bytes(10));
  writeFile(root_ / "3d" / "deep" / "b", Bytes(200));
  writeFile(root_ / ".hidden", Bytes(3000));
  writeFile(folder_ / "outside", Bytes(40000));
  fs::create_symlink(folder_ / "outside", root_ / "link");
  fs::create_directory_symlink(root_, root_ / "loop");
  ASSERT_EQ(::mkfifo((root_ / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(BackupLibrary::folderByteCount(root_), 3210);
}

TEST_F(BackupLibraryTest, MeasuresWhatItMayReadAndNothingOfAnAbsentFolder) {
  writeFile(root_ / "a", Bytes(10));
  writeFile(root_ / "closed" / "b", Bytes(200));
  openToAll(folder_.path());
  fs::permissions(root_ / "closed", fs::perms(0));
  EXPECT_EQ(asUnprivilegedUser([&] { return static_cast<int>(BackupLibrary::folderByteCount(root_)); }), 10);
  fs::permissions(root_ / "closed", fs::perms(0700));
  EXPECT_EQ(BackupLibrary::folderByteCount(folder_ / "absent"), 0);
}

TEST_F(BackupLibraryTest, StopsMeasuringWhenAskedTo) {
  writeFile(root_ / "a" / "b", Bytes(10));
  int asked = 0;
  const auto secondTime = [&] { return ++asked == 2; };
  EXPECT_THAT([&] { BackupLibrary::folderByteCount(root_, secondTime); },
              Fixture::failsWith(TidewellError::cancelled()));
}

TEST(BackupAccess, HasTheRawValuesThatAreShown) {
  EXPECT_EQ(rawValue(BackupAccess::readable), "readable");
  EXPECT_EQ(rawValue(BackupAccess::missing), "missing");
  EXPECT_EQ(rawValue(BackupAccess::denied), "denied");
}

TEST(DefaultPaths, BackupsAreLookedForInTheUsersHome) {
  EXPECT_EQ(DefaultPaths::mobileSyncBackup(),
            DefaultPaths::home() / "Library" / "Application Support" / "MobileSync" / "Backup");
  const std::string home = ::getenv("HOME") == nullptr ? "" : ::getenv("HOME");
  ::setenv("HOME", "/somewhere/ana", 1);
  EXPECT_EQ(DefaultPaths::mobileSyncBackup(), "/somewhere/ana/Library/Application Support/MobileSync/Backup");
  home.empty() ? ::unsetenv("HOME") : ::setenv("HOME", home.c_str(), 1);
}

}  // namespace
}  // namespace Fixture
