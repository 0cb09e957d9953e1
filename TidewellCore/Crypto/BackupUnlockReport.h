#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// How far the unlocking of an encrypted backup came. Holds no secret.
struct BackupUnlockReport {
  bool keyBagParsed = false;
  std::int64_t classKeyCount = 0;
  std::int64_t classKeysUnwrapped = 0;
  std::optional<std::uint32_t> manifestKeyClass;  // the protection class that "ManifestKey" names
  std::int64_t manifestCipherByteCount = 0;
  std::int64_t manifestDecryptedByteCount = 0;
  bool sqliteHeaderOK = false;
  std::string sqliteJournal = "unknown";
  bool openedAsWritableCopy = false;

  // One line a stage, in order, each beginning with "unlock: ".
  std::vector<std::string> diagnosticLines() const;

  bool operator==(const BackupUnlockReport&) const = default;
};

using UnlockObserver = std::function<void(const BackupUnlockReport&)>;
