#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "TidewellCore/TidewellError.h"

// The key that a scan derived, given to the export that follows it.
namespace {

using ExportTest::Scene;
using ExportTest::smallBackup;
using Fixture::failsWith;
using Phase = ExportProgress::Phase;

constexpr const char* password = "correct horse";

struct ExporterKeyTest : testing::Test {
  std::optional<PasswordKey> scannedKey() const {
    std::optional<PasswordKey> key;
    Exporter().scan({.backup = scene.backup, .password = password, .passwordKey = &key});
    return key;
  }

  // Tells whether the run said that it was unlocking.
  bool exportUnlocks(const PasswordKey* key, std::optional<std::string_view> given) const {
    bool isUnlocking = false;
    const ExportJob job{.backup = scene.backup,
                        .destination = scene.destination,
                        .options = ExportTest::mediaAlone(),
                        .password = given,
                        .passwordKey = key};
    const ExportSummary summary = Exporter().exportBackup(job, {.progress = [&](const ExportProgress& progress) {
                                                            isUnlocking =
                                                                isUnlocking || progress.phase == Phase::unlocking;
                                                          }});
    EXPECT_EQ(summary.copiedCount + summary.skippedExistingCount, 5);
    EXPECT_EQ(ExportTest::filesBelow(scene.content / "Ana").size(), 2U);
    return isUnlocking;
  }

  Scene scene{smallBackup(true)};
};

TEST_F(ExporterKeyTest, AScansKeyOpensTheBackupWhateverThePasswordIs) {
  const auto key = scannedKey();
  ASSERT_TRUE(key);
  // No derivation of a wrong password opens anything.
  EXPECT_FALSE(exportUnlocks(&*key, "wrong"));
  EXPECT_FALSE(exportUnlocks(&*key, std::nullopt));
}

TEST_F(ExporterKeyTest, WithoutAKeyThePasswordIsDerived) { EXPECT_TRUE(exportUnlocks(nullptr, password)); }

TEST_F(ExporterKeyTest, AKeyThatDoesNotFitGivesWayToThePassword) {
  auto key = scannedKey();
  ASSERT_TRUE(key);
  ++*key->derivation.doubleIterations;
  EXPECT_TRUE(exportUnlocks(&*key, password)) << "another backup's";
  --*key->derivation.doubleIterations;
  key->key.back() ^= 1;
  EXPECT_TRUE(exportUnlocks(&*key, password)) << "of another password";
  EXPECT_THAT([&] { exportUnlocks(&*key, "wrong"); }, failsWith(TidewellError::wrongBackupPassword()));
  EXPECT_THAT([&] { exportUnlocks(&*key, std::nullopt); }, failsWith(TidewellError::needsBackupPassword()));
}

TEST_F(ExporterKeyTest, APlainBackupHasNoneAndNeedsNone) {
  const auto key = scannedKey();
  scene.contents.encryption.reset();
  scene.write();
  EXPECT_EQ(scannedKey(), std::nullopt);
  EXPECT_FALSE(exportUnlocks(&*key, std::nullopt));
}

TEST_F(ExporterKeyTest, AFailedScanHandsOutNone) {
  std::optional<PasswordKey> key;
  EXPECT_ANY_THROW(Exporter().scan({.backup = scene.backup, .password = "wrong", .passwordKey = &key}));
  int asked = 0;
  EXPECT_ANY_THROW(Exporter().scan({.backup = scene.backup, .password = password, .passwordKey = &key},
                                   [&] { return ++asked > 8; }));
  EXPECT_GT(asked, 8) << "cancelled after the unlocking";
  EXPECT_FALSE(key);
}

}  // namespace
