#pragma once

#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

// A file index that is older than its backup does not list files that stand there all
// the same; so it is after backups were merged, or when one ended half way.
namespace UnlistedFiles {

// Whether a companion of the chats, or one of the newest media that messages name, is stored and not listed.
// Throws TidewellError::cancelled.
bool areThere(const OpenedBackup& opened, const ManifestStore& manifest, const ChatStorageSnapshot& snapshot,
              const CancellationCheck& isCancelled);

// A phone does not keep every medium, and each that it lacks is asked for on the disk, which may be slow. An older
// index lacks the newest ones.
inline constexpr std::size_t mostMedia = 100;

}  // namespace UnlistedFiles
