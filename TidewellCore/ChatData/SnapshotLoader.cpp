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

// Reads working copies, which are gone as soon as they are read.
template <typename Read>
auto readCopies(const OpenedBackup& opened, const DatabaseFiles& files, const CancellationCheck& isCancelled,
                Read read) {
  const TemporaryFolder folder(TemporaryFolder::databasesPrefix);
  return read(copyDatabase(opened, files, folder.path(), isCancelled));
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
  ChatStorageSnapshot snapshot;
  if (manifest.chatStorage) {
    snapshot = readCopies(opened, {&manifest.chatStorage, &manifest.chatStorageWAL, &manifest.chatStorageSHM},
                          isCancelled, readChats);
  }
  throwIfCancelled(isCancelled);
  if (manifest.contacts) {
    const auto contacts = readCopies(opened, {&manifest.contacts, &manifest.contactsWAL, &manifest.contactsSHM},
                                     isCancelled, ContactsReader::load);
    snapshot.setDirectory(ContactsReader::directory(contacts, std::move(snapshot.directory)));
  }
  throwIfCancelled(isCancelled);
  return snapshot;
}
