#include "TidewellCore/ChatData/SnapshotLoader.h"

#include <array>

#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ContactsReader.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

// A database and the companions that SQLite looks for beside it.
using DatabaseFiles = std::array<const std::optional<ManifestFile>*, 3>;

// Makes working copies side by side and returns the database's.
fs::path copyDatabase(const OpenedBackup& opened, const DatabaseFiles& files, const fs::path& folder,
                      const CancellationCheck& isCancelled) {
  for (const auto* file : files) {
    if (!*file) continue;
    const fs::path copy = folder / PathText::path((*file)->relativePath);
    TemporaryBackupDatabase::copyDatabaseFile(opened.url(), **file, copy, &opened, isCancelled);
  }
  return folder / PathText::path((*files[0])->relativePath);
}

ChatStorageSnapshot readChats(const fs::path& copy) {
  try {
    return ChatStorageReader::load(copy);
  } catch (const TidewellError& error) {
    const auto* damaged = std::get_if<TidewellError::InvalidDatabase>(&error.value());
    if (damaged == nullptr) throw;
    throw TidewellError::chatStorageUnreadable(damaged->detail);
  }
}

}  // namespace

ChatStorageSnapshot SnapshotLoader::load(const OpenedBackup& opened, const ManifestStore& manifest,
                                         const CancellationCheck& isCancelled) {
  const TemporaryFolder folder("Tidewell-databases-");
  ChatStorageSnapshot snapshot;
  if (manifest.chatStorage) {
    snapshot =
        readChats(copyDatabase(opened, {&manifest.chatStorage, &manifest.chatStorageWAL, &manifest.chatStorageSHM},
                               folder.path(), isCancelled));
  }
  throwIfCancelled(isCancelled);
  if (manifest.contacts) {
    const fs::path copy = copyDatabase(opened, {&manifest.contacts, &manifest.contactsWAL, &manifest.contactsSHM},
                                       folder.path(), isCancelled);
    snapshot.setDirectory(ContactsReader::directory(ContactsReader::load(copy), std::move(snapshot.directory)));
  }
  throwIfCancelled(isCancelled);
  return snapshot;
}
