#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Tests/ChatData/AppOfOneChat.h"
#include "Tests/ChatData/ReadDatabases.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PrivateTemporaryFolder.h"
#include "TidewellCore/ChatData/SnapshotLoader.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {

// Loads from plain and encrypted backups, and checks that nothing is left behind or touched.
class SnapshotLoaderTest : public testing::TestWithParam<bool> {
 protected:
  SnapshotLoaderTest() : contents_{.whatsApp = app(std::string(consumerDomain), "Ana")} {
    if (GetParam()) contents_.encryption = Encryption{};
  }

  SnapshotLoader::Loaded load(const CancellationCheck& isCancelled = {}) {
    std::filesystem::remove_all(device_);
    const WrittenBackup backup = writeBackup(contents_, device_);
    if (prepare_) prepare_(backup);
    const auto before = treeSnapshot(device_);
    std::optional<SnapshotLoader::Loaded> loaded;
    try {
      const OpenedBackup opened = OpenedBackup::open(device_, "correct horse");
      const auto manifest = ManifestStore::load(device_, opened.manifestDatabaseURL(), opened.usesTemporaryManifest());
      loaded = SnapshotLoader::load(opened, manifest, isCancelled);
    } catch (...) {
      EXPECT_EQ(treeSnapshot(device_), before) << "the backup was touched";
      throw;
    }
    EXPECT_EQ(treeSnapshot(device_), before) << "the backup was touched";
    return *std::move(loaded);
  }

  void expectUnreadable(const std::string& detail) {
    EXPECT_THAT([&] { load(); }, failsWith(TidewellError::chatStorageUnreadable(detail)));
  }

  // None, one that holds nothing, and one that holds something like a key.
  static std::vector<Fixture::StorageOptions> lostRecords() {
    return {{.withoutRecord = true},
            {.record = Fixture::Bytes(200, 0)},
            {.record = Fixture::bytesOf(std::string(99, '\t'))}};
  }

  void TearDown() override { EXPECT_THAT(temporary_.names(), testing::IsEmpty()) << "working folders are left behind"; }

  TemporaryDirectory folder_;
  PrivateTemporaryFolder temporary_;
  std::filesystem::path device_ = folder_ / "device";
  BackupContents contents_;
  std::function<void(const WrittenBackup&)> prepare_;  // changes the backup before it is read
};

}  // namespace Fixture
