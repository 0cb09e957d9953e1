#pragma once

#include <filesystem>

#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/Platform/TemporaryFolder.h"

// Copies of a backup's databases with what SQLite looks for beside them, so that
// it can put them right without touching the backup.
namespace WorkingCopies {

struct WorkingCopy {
  std::filesystem::path path;
  DatabaseFaults faults;  // seen before SQLite opened it
};

// Makes working copies side by side in the folder, and looks at them while they are
// as they were stored. Throws TidewellError::chatStorageUnreadable for a database that
// is not stored or has lost its key, ::cancelled, and what copying reports.
WorkingCopy make(const OpenedBackup& opened, const StoredDatabase& stored, const std::filesystem::path& folder,
                 const CancellationCheck& isCancelled);

// Makes them in a folder of their own, which is gone as soon as `use` has read them.
template <typename Use>
auto use(const OpenedBackup& opened, const StoredDatabase& stored, const CancellationCheck& isCancelled, Use use) {
  const TemporaryFolder folder(TemporaryFolder::databasesPrefix);
  return use(make(opened, stored, folder.path(), isCancelled));
}

}  // namespace WorkingCopies
