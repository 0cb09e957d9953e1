#include "TidewellCore/ChatData/SnapshotLoader.h"

#include <array>

#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ContactsReader.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* messageTable = "ZWAMESSAGE";
constexpr const char* contactTable = "ZWAADDRESSBOOKCONTACT";
constexpr std::array<const char*, 6> chatTables{messageTable,     "ZWACHATSESSION",     "ZWAMEDIAITEM",
                                                "ZWAGROUPMEMBER", "ZWAPROFILEPUSHNAME", "ZWAPHONENUMBERLIDPAIR"};
constexpr std::array<const char*, 1> contactTables{contactTable};

constexpr const char* noMessages =
    "Its list of messages is missing, so it is empty or damaged. Copy the backup again from where it came, or make a "
    "new one with the iPhone.";

// A database and the journal and index that SQLite looks for beside it.
struct DatabaseFiles {
  const std::optional<ManifestFile>& database;
  const std::optional<ManifestFile>& journal;
  const std::optional<ManifestFile>& index;
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

// Makes working copies side by side, and looks at them while they are as they were stored.
WorkingCopy copyDatabase(const OpenedBackup& opened, const DatabaseFiles& files, const fs::path& folder,
                         const CancellationCheck& isCancelled) {
  WorkingCopy made{.path = copy(opened, *files.database, folder, isCancelled)};
  const bool hasJournal = canBeRead(opened, files.journal);
  if (hasJournal) copy(opened, *files.journal, folder, isCancelled);
  if (canBeRead(opened, files.index)) copy(opened, *files.index, folder, isCancelled);
  made.faults = DatabaseCheck::beforeOpening(made.path,
                                             hasJournal ? files.journal->plaintextSize : std::optional<std::int64_t>());
  if (files.journal && !hasJournal) made.faults.insert(DatabaseFault::journalMissing);
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
  copy.faults.merge(DatabaseCheck::within(database, chatTables));
  append(snapshot.warnings, BackupDatabase::chats, copy.faults);
  return snapshot;
}

// Without contacts people are known by their numbers, so their absence ends nothing.
void addContacts(ChatStorageSnapshot& snapshot, WorkingCopy copy) {
  const std::vector<AddressBookContact> contacts = ContactsReader::load(copy.path);
  snapshot.setDirectory(ContactsReader::directory(contacts, std::move(snapshot.directory)));
  const SQLiteDB database(PathText::text(copy.path), SQLiteDB::OpenMode::readOnly);
  if (!database.tableExists(contactTable)) copy.faults.insert(DatabaseFault::damaged);
  copy.faults.merge(DatabaseCheck::within(database, contactTables));
  append(snapshot.warnings, BackupDatabase::contacts, copy.faults);
}

}  // namespace

ChatStorageSnapshot SnapshotLoader::load(const OpenedBackup& opened, const ManifestStore& manifest,
                                         const CancellationCheck& isCancelled) {
  ChatStorageSnapshot snapshot;
  if (manifest.chatStorage) {
    snapshot = readCopies(opened, {manifest.chatStorage, manifest.chatStorageWAL, manifest.chatStorageSHM}, isCancelled,
                          loadChats);
  }
  throwIfCancelled(isCancelled);
  if (manifest.contacts) {
    readCopies(opened, {manifest.contacts, manifest.contactsWAL, manifest.contactsSHM}, isCancelled,
               [&](WorkingCopy copy) { addContacts(snapshot, std::move(copy)); });
  }
  throwIfCancelled(isCancelled);
  return snapshot;
}
