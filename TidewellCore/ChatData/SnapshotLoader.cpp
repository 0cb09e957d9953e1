#include "TidewellCore/ChatData/SnapshotLoader.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ContactsReader.h"
#include "TidewellCore/ChatData/MissingMessages.h"
#include "TidewellCore/ChatData/UnlistedFiles.h"
#include "TidewellCore/ChatData/UnreadApps.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* messageTable = "ZWAMESSAGE";
constexpr const char* contactTable = "ZWAADDRESSBOOKCONTACT";
constexpr std::array<DatabaseTable, 6> chatTables{{{.name = messageTable, .reference = "ZCHATSESSION"},
                                                   {.name = "ZWAMEDIAITEM", .reference = "ZMESSAGE"},
                                                   {.name = "ZWACHATSESSION", .isShort = true},
                                                   {.name = "ZWAGROUPMEMBER", .isShort = true},
                                                   {.name = "ZWAPROFILEPUSHNAME", .isShort = true},
                                                   {.name = "ZWAPHONENUMBERLIDPAIR", .isShort = true}}};
constexpr std::array contactTables{DatabaseTable{.name = contactTable, .isShort = true}};

constexpr const char* noMessages =
    "Its list of messages is missing, so it is empty or damaged. Copy the backup again from where it came, or make a "
    "new one with the iPhone.";

constexpr const char* noChats =
    "It does not say which chats its messages belong to, so it is damaged. Copy the backup again from where it came, "
    "or make a new one with the iPhone.";

// A database and the journal and index that SQLite looks for beside it.
struct DatabaseFiles {
  const std::optional<ManifestFile>& database;
  const std::optional<ManifestFile>& journal;
  const std::optional<ManifestFile>& index;
  const std::optional<ManifestFile>& rollback;
};

struct WorkingCopy {
  fs::path path;
  DatabaseFaults faults;
};

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

// Makes working copies side by side, and looks at them while they are as they were stored.
WorkingCopy copyDatabase(const OpenedBackup& opened, const DatabaseFiles& files, const fs::path& folder,
                         const CancellationCheck& isCancelled) {
  WorkingCopy made{.path = copy(opened, *files.database, folder, isCancelled)};
  const bool hasJournal = canBeRead(opened, files.journal);
  if (hasJournal) copy(opened, *files.journal, folder, isCancelled);
  const bool hasRollback = canBeRead(opened, files.rollback);
  if (hasRollback) copy(opened, *files.rollback, folder, isCancelled);
  if (canBeRead(opened, files.index)) copy(opened, *files.index, folder, isCancelled);
  made.faults =
      DatabaseCheck::beforeOpening(made.path, hasJournal ? files.journal->plaintextSize : std::optional<std::int64_t>(),
                                   SQLiteWALIndex::read(made.path.native() + "-shm"));
  if (isShorterThanNoted(opened, *files.database)) made.faults.insert(DatabaseFault::damaged);
  const bool isRollbackLost = files.rollback && !hasRollback && files.rollback->plaintextSize != 0;
  if ((files.journal && !hasJournal) || isRollbackLost) made.faults.insert(DatabaseFault::journalMissing);
  return made;
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

void append(std::vector<std::string>& warnings, BackupDatabase database, const DatabaseFaults& faults) {
  for (std::string& warning : DatabaseCheck::warnings(database, faults)) warnings.push_back(std::move(warning));
}

ChatStorageSnapshot loadChats(WorkingCopy copy) {
  ChatStorageSnapshot snapshot = readChats(copy.path);
  const SQLiteDB database(PathText::text(copy.path), SQLiteDB::OpenMode::readOnly);
  if (!database.tableExists(messageTable)) throw TidewellError::chatStorageUnreadable(noMessages);
  if (MissingMessages::areAll(snapshot)) throw TidewellError::chatStorageUnreadable(noChats);
  if (MissingMessages::mayBeMissing(snapshot)) copy.faults.insert(DatabaseFault::damaged);
  copy.faults.merge(DatabaseCheck::within(database, chatTables));
  append(snapshot.warnings, BackupDatabase::chats, copy.faults);
  std::ranges::move(MissingMessages::warnings(snapshot), std::back_inserter(snapshot.warnings));
  return snapshot;
}

// Whether a database that is whole may have failed so: SQLite's words for what the disk
// of the working copies, or the memory, does not give.
bool isOfThisMachine(const TidewellError& error) {
  constexpr std::array words{"disk I/O error", "database or disk is full", "unable to open database file",
                             "out of memory"};
  return !error.is<TidewellError::InvalidDatabase>() ||
         std::ranges::any_of(words, [&](const char* text) { return error == TidewellError::invalidDatabase(text); });
}

struct Contacts {
  std::vector<AddressBookContact> all;
  DatabaseFaults faults;
};

// Those that can be read of a working copy.
Contacts readContacts(WorkingCopy copy) {
  Contacts contacts{.faults = std::move(copy.faults)};
  try {
    if (!ContactsReader::load(copy.path, contacts.all)) contacts.faults.insert(DatabaseFault::damaged);
    const SQLiteDB database(PathText::text(copy.path), SQLiteDB::OpenMode::readOnly);
    contacts.faults.merge(DatabaseCheck::within(database, contactTables));
  } catch (const TidewellError& error) {
    if (isOfThisMachine(error)) throw;
    contacts.faults.insert(DatabaseFault::damaged);
  }
  return contacts;
}

// Whether the backup has no copy of a file to give, or no key that opens it.
bool isNotToBeHad(const TidewellError& error) {
  return error.is<TidewellError::ChatStorageUnreadable>() || error.is<TidewellError::IOFailure>() ||
         error.is<TidewellError::WrongBackupPassword>();
}

Contacts readContacts(const OpenedBackup& opened, const DatabaseFiles& files,
                      const CancellationCheck& isCancelled) try {
  return readCopies(opened, files, isCancelled, [](WorkingCopy copy) { return readContacts(std::move(copy)); });
} catch (const TidewellError& error) {
  if (!isNotToBeHad(error)) throw;
  return {.faults = {DatabaseFault::damaged}};
}

// Without contacts people are known by their numbers, so damage to them ends nothing.
// Folders keep the names they get, so what may have failed for a moment is read once more.
void addContacts(ChatStorageSnapshot& snapshot, const OpenedBackup& opened, const DatabaseFiles& files,
                 const CancellationCheck& isCancelled) {
  Contacts contacts = readContacts(opened, files, isCancelled);
  if (contacts.faults.contains(DatabaseFault::damaged)) contacts = readContacts(opened, files, isCancelled);
  snapshot.setDirectory(ContactsReader::directory(contacts.all, std::move(snapshot.directory)));
  append(snapshot.warnings, BackupDatabase::contacts, contacts.faults);
}

// A phone keeps the files of messages: where there are files and items of media, and
// not one of these names a file, their paths cannot be read.
bool areLinksLost(const ChatStorageSnapshot& snapshot, const ManifestStore& manifest) {
  const auto isOfTheseChats = [&](const ManifestFile& file) { return file.domain == manifest.chatStorage->domain; };
  return manifest.chatStorage && snapshot.unread.namelessItems > 0 &&
         std::ranges::any_of(manifest.media, isOfTheseChats);
}

}  // namespace

ChatStorageSnapshot SnapshotLoader::load(const OpenedBackup& opened, const ManifestStore& manifest,
                                         const CancellationCheck& isCancelled) {
  ChatStorageSnapshot snapshot;
  if (manifest.chatStorage) {
    snapshot = readCopies(
        opened, {manifest.chatStorage, manifest.chatStorageWAL, manifest.chatStorageSHM, manifest.chatStorageRollback},
        isCancelled, loadChats);
  }
  throwIfCancelled(isCancelled);
  if (manifest.contacts) {
    addContacts(snapshot, opened,
                {manifest.contacts, manifest.contactsWAL, manifest.contactsSHM, manifest.contactsRollback},
                isCancelled);
  } else if (manifest.isWithoutItsContacts) {
    append(snapshot.warnings, BackupDatabase::contacts, {DatabaseFault::damaged});
  }
  if (areLinksLost(snapshot, manifest)) append(snapshot.warnings, BackupDatabase::chats, {DatabaseFault::damaged});
  if (UnlistedFiles::areThere(opened, manifest, snapshot, isCancelled)) {
    append(snapshot.warnings, BackupDatabase::index, {DatabaseFault::damaged});
  }
  throwIfCancelled(isCancelled);
  std::ranges::move(UnreadApps::warnings(manifest), std::back_inserter(snapshot.warnings));
  return snapshot;
}
