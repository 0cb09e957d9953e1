#pragma once

#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

namespace SnapshotLoader {

struct Loaded {
  ChatStorageSnapshot snapshot;
  std::vector<std::string> warnings;  // of what may be missing: sentences for people, in English
};

// Reads the chat and the contacts database of a backup from working copies,
// which are gone when it returns or throws. Empty where the backup has neither.
// Damage that leaves something to read is told in the warnings; a chat
// database without a table of messages, or without one that says its chat, is
// unreadable. Contacts, calls and identities that are damaged, or of which only the
// journal is there, are a warning.
// Throws TidewellError::chatStorageUnreadable, ::invalidDatabase, ::cancelled,
// and what making the copies reports.
Loaded load(const OpenedBackup& opened, const ManifestStore& manifest, const CancellationCheck& isCancelled = {});

}  // namespace SnapshotLoader
