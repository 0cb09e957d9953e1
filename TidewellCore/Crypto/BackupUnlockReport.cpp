#include "TidewellCore/Crypto/BackupUnlockReport.h"

#include <fmt/format.h>

std::vector<std::string> BackupUnlockReport::diagnosticLines() const {
  const auto yesOrNo = [](bool value) { return value ? "yes" : "no"; };
  return {
      fmt::format("unlock: keybag parsed {}", yesOrNo(keyBagParsed)),
      fmt::format("unlock: class keys {}/{} unwrapped", classKeysUnwrapped, classKeyCount),
      fmt::format("unlock: ManifestKey class {}", manifestKeyClass ? std::to_string(*manifestKeyClass) : "missing"),
      fmt::format("unlock: Manifest.db ciphertext {} bytes", manifestCipherByteCount),
      fmt::format("unlock: Manifest.db decrypted {} bytes", manifestDecryptedByteCount),
      fmt::format("unlock: SQLite header {}", sqliteHeaderOK ? "ok" : "missing"),
      fmt::format("unlock: SQLite journal {}", sqliteJournal),
      fmt::format("unlock: writable temp copy {}", yesOrNo(openedAsWritableCopy)),
  };
}
