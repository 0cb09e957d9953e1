#include "TidewellCore/ChatData/WorkingCopies.h"

#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

fs::path copy(const OpenedBackup& opened, const ManifestFile& file, const fs::path& folder,
              const CancellationCheck& isCancelled) {
  fs::path place = folder / PathText::path(file.relativePath);
  TemporaryBackupDatabase::copyDatabaseFile(opened.url(), file, place, &opened, isCancelled);
  return place;
}

// False for what is listed and not stored, or locked with a key that is lost.
bool canBeRead(const OpenedBackup& opened, const std::optional<ManifestFile>& companion) {
  return companion && opened.isStored(*companion) && opened.isOpenedBy(opened.keyOf(*companion));
}

// A database may have grown since its size was noted; a shorter one is another, older one.
bool isShorterThanNoted(const OpenedBackup& opened, const ManifestFile& database) {
  const auto size = opened.provenSize(database);
  return size && *size < database.plaintextSize.value_or(0);
}

}  // namespace

WorkingCopies::WorkingCopy WorkingCopies::make(const OpenedBackup& opened, const StoredDatabase& stored,
                                               const fs::path& folder, const CancellationCheck& isCancelled) {
  WorkingCopy made{.path = copy(opened, *stored.file, folder, isCancelled)};
  const auto copyCompanion = [&](const std::optional<ManifestFile>& companion) {
    const bool isThere = canBeRead(opened, companion);
    if (isThere) copy(opened, *companion, folder, isCancelled);
    return isThere;
  };
  const bool hasLog = copyCompanion(stored.wal);
  const bool hasRollback = copyCompanion(stored.rollback);
  copyCompanion(stored.shm);
  made.faults =
      DatabaseCheck::beforeOpening(made.path, hasLog ? stored.wal->plaintextSize : std::optional<std::int64_t>(),
                                   SQLiteWALIndex::read(made.path.native() + "-shm"));
  if (isShorterThanNoted(opened, *stored.file)) made.faults.insert(DatabaseFault::damaged);
  const bool isRollbackLost = stored.rollback && !hasRollback && stored.rollback->plaintextSize != 0;
  if ((stored.wal && !hasLog) || isRollbackLost) made.faults.insert(DatabaseFault::journalMissing);
  return made;
}
