#pragma once

#include <filesystem>

#include "TidewellCore/Backup/BackupInfo.h"

namespace BackupInspector {

// Reads the metadata of one backup folder. Throws TidewellError::backupNotFound,
// ::notABackup, ::multipleDeviceBackups or ::ioFailure, and passes on what
// reading Manifest.plist or Info.plist reports. Of what cannot be looked at
// std::filesystem::filesystem_error tells: it may be there.
BackupInfo inspect(const std::filesystem::path& backup);

}  // namespace BackupInspector
