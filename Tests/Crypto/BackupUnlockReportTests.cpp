#include "TidewellCore/Crypto/BackupUnlockReport.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

TEST(BackupUnlockReport, AnEmptyReportShowsItsDefaults) {
  EXPECT_THAT(
      BackupUnlockReport{}.diagnosticLines(),
      ElementsAre("unlock: keybag parsed no", "unlock: class keys 0/0 unwrapped", "unlock: ManifestKey class missing",
                  "unlock: Manifest.db ciphertext 0 bytes", "unlock: Manifest.db decrypted 0 bytes",
                  "unlock: SQLite header missing", "unlock: SQLite journal unknown", "unlock: writable temp copy no"));
}

TEST(BackupUnlockReport, AFullReportShowsEveryStage) {
  const BackupUnlockReport report{.keyBagParsed = true,
                                  .classKeyCount = 11,
                                  .classKeysUnwrapped = 8,
                                  .manifestKeyClass = 3,
                                  .manifestCipherByteCount = 4112,
                                  .manifestDecryptedByteCount = 4096,
                                  .sqliteHeaderOK = true,
                                  .sqliteJournal = "wal",
                                  .openedAsWritableCopy = true};
  EXPECT_THAT(
      report.diagnosticLines(),
      ElementsAre("unlock: keybag parsed yes", "unlock: class keys 8/11 unwrapped", "unlock: ManifestKey class 3",
                  "unlock: Manifest.db ciphertext 4112 bytes", "unlock: Manifest.db decrypted 4096 bytes",
                  "unlock: SQLite header ok", "unlock: SQLite journal wal", "unlock: writable temp copy yes"));
}

}  // namespace
