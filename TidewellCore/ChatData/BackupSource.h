#pragma once

#include <functional>
#include <string>
#include <vector>

#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

// A backup that was opened and read: all that a scan or an export asks of it.
struct BackupSource {
  OpenedBackup opened;  // restores files
  ManifestStore manifest;
  ChatStorageSnapshot snapshot;
  std::vector<std::string> warnings;  // of what may be missing: sentences for people, in English

  const std::vector<ManifestFile>& media() const { return manifest.media; }
  const std::vector<ManifestFile>& pictures() const { return manifest.profilePictures; }

  // Frees the memory of what was read, once it is needed no more; `opened` and `warnings` stay.
  void forget();

  // Reads the file index, which stands decrypted on the disk no longer than
  // that, and the databases. Throws what `require` throws of an index that
  // will not do, and what SnapshotLoader reports.
  static BackupSource load(OpenedBackup opened, const CancellationCheck& isCancelled,
                           const std::function<void(const ManifestStore&)>& require = {});
};
