#include "TidewellCore/ChatData/WorkingCopies.h"

#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

// Tells whether its end may be damaged.
bool copy(const OpenedBackup& opened, const ManifestFile& file, const fs::path& place,
          const CancellationCheck& isCancelled) {
  return TemporaryBackupDatabase::copyDatabaseFile(opened.url(), file, place, &opened, isCancelled).isDoubtful;
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
  const auto placeOf = [&](const ManifestFile& file) { return folder / PathText::path(file.relativePath); };
  WorkingCopy made{.path = placeOf(*stored.file)};
  const bool isDoubtful = copy(opened, *stored.file, made.path, isCancelled);
  std::int64_t doubtfulCompanions = 0;
  const auto copyCompanion = [&](const std::optional<ManifestFile>& companion) {
    const bool isThere = canBeRead(opened, companion);
    if (isThere && copy(opened, *companion, placeOf(*companion), isCancelled)) ++doubtfulCompanions;
    return isThere;
  };
  const bool hasLog = copyCompanion(stored.wal);
  const bool hasRollback = copyCompanion(stored.rollback);
  const bool isJournalDoubtful = doubtfulCompanions > 0;  // the third companion is only an index, which SQLite checks
  copyCompanion(stored.shm);
  made.faults =
      DatabaseCheck::beforeOpening(made.path, hasLog ? stored.wal->plaintextSize : std::optional<std::int64_t>(),
                                   SQLiteWALIndex::read(made.path.native() + "-shm"));
  if (isDoubtful || isShorterThanNoted(opened, *stored.file)) made.faults.insert(DatabaseFault::damaged);
  if (isJournalDoubtful) made.faults.insert(DatabaseFault::journalDamaged);
  const bool isRollbackLost = stored.rollback && !hasRollback && stored.rollback->plaintextSize != 0;
  if ((stored.wal && !hasLog) || isRollbackLost) made.faults.insert(DatabaseFault::journalMissing);
  return made;
}
