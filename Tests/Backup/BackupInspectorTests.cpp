#include "TidewellCore/Backup/BackupInspector.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PlistWriter.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Unprivileged.h"
#include "TidewellCore/Platform/PropertyList.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;

// A device folder of loose property lists; what a test sets to nothing is not written.
class BackupInspectorTest : public testing::Test {
 protected:
  BackupInfo inspect() const {
    writeFile(device_ / "Manifest.plist", binaryPlist(manifest_));
    if (hasIndex_) writeFile(device_ / "Manifest.db", "an index");
    if (!info_.empty()) writeFile(device_ / "Info.plist", xmlPlist(info_));
    if (!status_.empty()) writeFile(device_ / "Status.plist", binaryPlist(status_));
    return BackupInspector::inspect(device_);
  }

  bool isEncrypted(PlistValue value) {
    setKey(manifest_, "IsEncrypted", std::move(value));
    return inspect().isEncrypted;
  }

  TemporaryDirectory folder_;
  fs::path device_ = folder_ / "device";
  PlistDictionary manifest_ = {{"IsEncrypted", false}};
  PlistDictionary info_;
  PlistDictionary status_;
  bool hasIndex_ = true;
};

TEST_F(BackupInspectorTest, ReadsWhatARealBackupSaysOfItself) {
  const WrittenBackup backup = writeBackup({}, device_);
  const auto before = treeSnapshot(device_);
  const BackupInfo expected{.url = device_,
                            .deviceName = "Ana's iPhone",
                            .productType = "iPhone14,5",
                            .iosVersion = "17.5.1",
                            .backupDate = dateFromUnixTime(1'717'243'200),
                            .isEncrypted = false,
                            .uniqueIdentifier = "00008110-000A1B2C3D4E5F60"};
  EXPECT_EQ(BackupInspector::inspect(device_), expected);
  EXPECT_EQ(treeSnapshot(device_), before);
}

TEST_F(BackupInspectorTest, TellsAnEncryptedBackupWithoutItsPassword) {
  writeBackup({.encryption = Encryption{}}, device_);
  EXPECT_TRUE(BackupInspector::inspect(device_).isEncrypted);
}

TEST_F(BackupInspectorTest, TakesManySpellingsOfYesForEncrypted) {
  for (const char* yes : {"YES", "yes", "Yes", "true", "TRUE", "1"}) EXPECT_TRUE(isEncrypted(yes)) << yes;
  EXPECT_TRUE(isEncrypted(true));
  EXPECT_TRUE(isEncrypted(1));
  EXPECT_TRUE(isEncrypted(-3));
  EXPECT_TRUE(isEncrypted(0.5));
}

TEST_F(BackupInspectorTest, TakesEverythingElseForPlain) {
  for (const char* no : {"no", "NO", "0", "", "encrypted", " yes"}) EXPECT_FALSE(isEncrypted(no)) << no;
  EXPECT_FALSE(isEncrypted(false));
  EXPECT_FALSE(isEncrypted(0));
  EXPECT_FALSE(isEncrypted(0.0));
  EXPECT_FALSE(isEncrypted(PlistDate{1}));
  EXPECT_FALSE(isEncrypted(bytesOf("1")));
  removeKey(manifest_, "IsEncrypted");
  manifest_.emplace_back("Version", "10.0");
  EXPECT_FALSE(inspect().isEncrypted);
}

TEST_F(BackupInspectorTest, FallsBackToTheDisplayNameWhenTheDeviceNameIsEmptyOrMissing) {
  info_ = {{"Device Name", ""}, {"Display Name", "Phone of Ana"}};
  EXPECT_EQ(inspect().deviceName, "Phone of Ana");
  info_ = {{"Display Name", "Phone of Ana"}};
  EXPECT_EQ(inspect().deviceName, "Phone of Ana");
  info_ = {{"Device Name", "Ana"}, {"Display Name", "Phone of Ana"}};
  EXPECT_EQ(inspect().deviceName, "Ana");
  info_ = {{"Device Name", 7}, {"Display Name", ""}};
  EXPECT_EQ(inspect().deviceName, std::nullopt);
}

TEST_F(BackupInspectorTest, NeedsNoInfoAndTakesTheDateFromTheStatusThen) {
  status_ = {{"Date", PlistDate{700000000}}};
  EXPECT_EQ(inspect(), (BackupInfo{.url = device_, .backupDate = dateFromAppleTime(700000000)}));
}

TEST_F(BackupInspectorTest, PrefersTheDateOfTheInfo) {
  info_ = {{"Last Backup Date", PlistDate{700000001}}};
  status_ = {{"Date", PlistDate{700000000}}};
  EXPECT_EQ(inspect().backupDate, dateFromAppleTime(700000001));
}

TEST_F(BackupInspectorTest, DoesNotReadADateWrittenAsText) {
  info_ = {{"Last Backup Date", "2024-05-01T12:00:00Z"}};
  status_ = {{"Date", PlistDate{700000000}}};
  EXPECT_EQ(inspect().backupDate, dateFromAppleTime(700000000));
  status_ = {{"Date", "2024-05-01T12:00:00Z"}};
  EXPECT_EQ(inspect().backupDate, std::nullopt);
}

TEST_F(BackupInspectorTest, ADamagedStatusCostsOnlyTheDate) {
  writeFile(device_ / "Status.plist", "neither XML nor binary");
  EXPECT_EQ(inspect().backupDate, std::nullopt);
  writeFile(device_ / "Status.plist", xmlPlist(PlistArray{"Date"}));
  EXPECT_EQ(inspect().backupDate, std::nullopt);
  fs::remove(device_ / "Status.plist");
  ASSERT_EQ(::mkfifo((device_ / "Status.plist").c_str(), 0600), 0);
  EXPECT_EQ(inspect().backupDate, std::nullopt);
}

TEST_F(BackupInspectorTest, SaysThatAPathDoesNotExist) {
  const fs::path absent = folder_ / "absent";
  EXPECT_THAT([&] { BackupInspector::inspect(absent); }, failsWith(TidewellError::backupNotFound(absent.string())));
}

TEST_F(BackupInspectorTest, AFileIsNoBackup) {
  const fs::path file = folder_ / "file";
  writeFile(file, "text");
  EXPECT_THAT([&] { BackupInspector::inspect(file); }, failsWith(TidewellError::notABackup(file.string())));
}

TEST_F(BackupInspectorTest, AFolderWithOneDeviceFolderIsNotOpenedInTheUsersStead) {
  writeBackup({}, device_);
  EXPECT_THAT([&] { BackupInspector::inspect(folder_.path()); },
              failsWith(TidewellError::notABackup(folder_.path().string())));
}

TEST_F(BackupInspectorTest, NamesTheDeviceFoldersOfAFolderWithSeveral) {
  for (const char* name : {"b", "a", "Z", "é", ".hidden"}) writeFile(folder_ / name / "Manifest.plist", "not read");
  writeFile(folder_ / "no backup" / "Info.plist", "not read");
  writeFile(folder_ / "file", "not read");
  EXPECT_THAT([&] { BackupInspector::inspect(folder_.path()); },
              failsWith(TidewellError::multipleDeviceBackups({"Z", "a", "b", "é"})));
}

TEST_F(BackupInspectorTest, HiddenFoldersDoNotCountAsBackups) {
  for (const char* name : {"a", ".b"}) writeFile(folder_ / name / "Manifest.plist", "not read");
  EXPECT_THAT([&] { BackupInspector::inspect(folder_.path()); },
              failsWith(TidewellError::notABackup(folder_.path().string())));
}

TEST_F(BackupInspectorTest, APlainBackupNeedsItsIndex) {
  hasIndex_ = false;
  EXPECT_THAT([&] { inspect(); }, failsWith(TidewellError::notABackup(device_.string())));
}

TEST_F(BackupInspectorTest, TheIndexOfAnEncryptedBackupIsLookedForLater) {
  hasIndex_ = false;
  EXPECT_TRUE(isEncrypted(true));
}

TEST_F(BackupInspectorTest, ReportsAPropertyListThatIsNoDictionary) {
  inspect();
  writeFile(device_ / "Info.plist", xmlPlist(PlistArray{}));
  EXPECT_THAT([&] { BackupInspector::inspect(device_); }, failsWith("“Info.plist” is not a dictionary plist."));
  writeFile(device_ / "Manifest.plist", binaryPlist("text"));
  EXPECT_THAT([&] { BackupInspector::inspect(device_); }, failsWith("“Manifest.plist” is not a dictionary plist."));
}

TEST_F(BackupInspectorTest, PassesOnThatAPropertyListCannotBeParsed) {
  inspect();
  writeFile(device_ / "Info.plist", "bplist00 cut short");
  EXPECT_THROW(BackupInspector::inspect(device_), PropertyListError);
  writeFile(device_ / "Manifest.plist", "");
  EXPECT_THROW(BackupInspector::inspect(device_), PropertyListError);
}

// A disk that does not answer at this moment may hold a backup all the same.
TEST_F(BackupInspectorTest, AFolderThatCannotBeLookedIntoIsNotTakenForNone) {
  inspect();
  fs::permissions(folder_.path(), fs::perms::owner_all | fs::perms::others_exec);
  fs::permissions(device_, fs::perms::owner_all | fs::perms::others_read);
  enum { other, cannotLook };
  const int result = asUnprivilegedUser([&] {
    try {
      BackupInspector::inspect(device_);
    } catch (const fs::filesystem_error& error) {
      return error.code() == std::errc::permission_denied ? cannotLook : other;
    } catch (const std::exception&) {
    }
    return other;
  });
  EXPECT_EQ(result, cannotLook);
}

TEST_F(BackupInspectorTest, AFIFOOrAFolderAsPropertyListIsRefusedWithoutWaiting) {
  fs::create_directories(device_);
  ASSERT_EQ(::mkfifo((device_ / "Manifest.plist").c_str(), 0600), 0);
  EXPECT_THROW(BackupInspector::inspect(device_), fs::filesystem_error);
  fs::remove(device_ / "Manifest.plist");
  fs::create_directory(device_ / "Manifest.plist");
  EXPECT_THROW(BackupInspector::inspect(device_), fs::filesystem_error);
}

}  // namespace
}  // namespace Fixture
