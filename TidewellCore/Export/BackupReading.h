#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Crypto/PasswordKey.h"
#include "TidewellCore/Export/ProgressReporter.h"

// A backup, and what opens it. All is the caller's and must outlive the reading.
struct BackupToRead {
  const std::filesystem::path& backup;
  std::optional<std::string_view> password;  // not looked at again once `unlockReport` was called
  const PasswordKey* passwordKey = nullptr;  // of an earlier scan
  const UnlockObserver& unlockReport;
};

namespace BackupReading {

// Opens and reads a backup for an export, or for what an export is compared with; tells its phases. Throws what
// OpenedBackup and BackupSource do, and TidewellError::chatStorageUnreadable for one without WhatsApp's data.
BackupSource read(const BackupToRead& backup, ProgressReporter& progress, const RunControl& control);

// The two halves of it. `look` is shown the index before the databases are read.
OpenedBackup open(const BackupToRead& backup, ProgressReporter& progress, const RunControl& control);
BackupSource read(OpenedBackup opened, ProgressReporter& progress, const RunControl& control,
                  const std::function<void(const ManifestStore&)>& look);

}  // namespace BackupReading
