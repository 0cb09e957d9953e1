#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PrivateTemporaryFolder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {

inline constexpr const char* password = "correct horse";

inline BackupContents plainContents() {
  return {.whatsApp = {.chats = {{.jid = "5511900001111@s.whatsapp.net", .name = "Ana"}},
                       .files = {{"", "Message/Media/a/1.jpg", bytesOf("not a photo")}}}};
}

inline BackupContents encryptedContents() {
  BackupContents contents = plainContents();
  contents.encryption = Encryption{.keyBag = {.password = password}};
  return contents;
}

// Opens backups, sees every report and working folder, and checks that the backup stays as it was.
class OpenedBackupTest : public testing::Test {
 protected:
  const WrittenBackup& write(const BackupContents& contents) {
    backup_ = writeBackup(contents, device_);
    before_ = treeSnapshot(device_);
    return backup_;
  }

  // Call it after a test's own change of the backup.
  void rememberBackup() { before_ = treeSnapshot(device_); }

  void rewriteManifest() {
    writeFile(device_ / "Manifest.plist", binaryPlist(backup_.manifest));
    rememberBackup();
  }

  OpenedBackup open(std::optional<std::string_view> given, const CancellationCheck& isCancelled = {}) {
    const RunControl control{.progress = [&](const ExportProgress& progress) { progress_.push_back(progress); },
                             .isCancelled = isCancelled};
    return OpenedBackup::open(device_, given, control,
                              [&](const BackupUnlockReport& report) { reports_.push_back(report); });
  }

  static ManifestStore index(const OpenedBackup& opened) {
    return ManifestStore::load(opened.url(), opened.manifestDatabaseURL(), opened.usesTemporaryManifest());
  }

  // Expects this failure, one report, no working folder and an untouched backup.
  void expectFailure(const TidewellError& error, std::string_view given = password) {
    EXPECT_THAT([&] { open(given); }, failsWith(error));
    EXPECT_THAT(reports_, testing::SizeIs(1));
  }

  void TearDown() override {
    EXPECT_THAT(temporary_.names(), testing::IsEmpty()) << "working folders are left behind";
    EXPECT_EQ(treeSnapshot(device_), before_) << "the backup was touched";
  }

  TemporaryDirectory folder_;
  PrivateTemporaryFolder temporary_;
  std::filesystem::path device_ = folder_ / "device";
  WrittenBackup backup_;
  std::map<std::string, TreeEntry> before_;
  std::vector<BackupUnlockReport> reports_;
  std::vector<ExportProgress> progress_;
};

}  // namespace Fixture
