#include "TidewellCore/ChatData/SnapshotLoader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>

#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/ChatData/CallHistoryReader.h"
#include "TidewellCore/ChatData/CallsInChats.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ContactsReader.h"
#include "TidewellCore/ChatData/LinkedIdentities.h"
#include "TidewellCore/ChatData/MissingMessages.h"
#include "TidewellCore/ChatData/UnlistedFiles.h"
#include "TidewellCore/ChatData/UnreadApps.h"
#include "TidewellCore/ChatData/WorkingCopies.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* messageTable = "ZWAMESSAGE";
constexpr const char* contactTable = "ZWAADDRESSBOOKCONTACT";
constexpr std::array<DatabaseTable, 9> chatTables{
    {{.name = messageTable, .reference = "ZCHATSESSION"},
     {.name = "ZWAMEDIAITEM", .reference = "ZMESSAGE"},
     {.name = "ZWAMESSAGEINFO", .reference = "ZMESSAGE", .isShort = true},
     {.name = "ZWAMESSAGEDATAITEM", .reference = "ZMESSAGE", .isShort = true},
     {.name = "ZWACHATSESSION", .isShort = true},
     {.name = "ZWAGROUPINFO", .isShort = true},
     {.name = "ZWAGROUPMEMBER", .isShort = true},
     {.name = "ZWAPROFILEPUSHNAME", .isShort = true},
     {.name = "ZWAPHONENUMBERLIDPAIR", .isShort = true}}};
constexpr std::array contactTables{DatabaseTable{.name = contactTable, .isShort = true}};
constexpr std::array identityTables{DatabaseTable{.name = "ZWAPHONENUMBERLIDPAIR", .isShort = true},
                                    DatabaseTable{.name = "ZWAZACCOUNT", .isShort = true}};
constexpr std::array callTables{
    DatabaseTable{.name = "ZWACDCALLEVENT", .reference = "Z1CALLEVENTS", .isShort = true},
    DatabaseTable{.name = "ZWAAGGREGATECALLEVENT", .isShort = true},
    DatabaseTable{.name = "ZWACDCALLEVENTPARTICIPANT", .reference = "Z1PARTICIPANTS", .isShort = true}};

constexpr const char* noMessages =
    "Its list of messages is missing, so it is empty or damaged. Copy the backup again from where it came, or make a "
    "new one with the iPhone.";

constexpr const char* noChats =
    "It does not say which chats its messages belong to, so it is damaged. Copy the backup again from where it came, "
    "or make a new one with the iPhone.";

// The media of the app whose chats are read; good while the index lives.
MediaPaths::Lookup filesOf(const ManifestStore& manifest) {
  std::unordered_set<std::string_view> paths;
  paths.reserve(manifest.media.size());
  for (const ManifestFile& file : manifest.media) {
    if (file.domain == manifest.chatStorage->domain) paths.insert(file.relativePath);
  }
  return [paths = std::move(paths)](const std::string& path) { return paths.contains(path); };
}

ChatTables readChats(const fs::path& copy, const ChatStorageReader::Setting& setting) {
  try {
    return ChatStorageReader::load(copy, setting);
  } catch (const TidewellError& error) {
    const auto* damaged = std::get_if<TidewellError::InvalidDatabase>(&error.value());
    if (damaged == nullptr) throw;
    throw TidewellError::chatStorageUnreadable(damaged->detail);
  }
}

void append(std::vector<std::string>& warnings, BackupDatabase database, const DatabaseFaults& faults) {
  for (std::string& warning : DatabaseCheck::warnings(database, faults)) warnings.push_back(std::move(warning));
}

// Tables as they were read, and what may be missing of them.
struct Chats {
  ChatTables tables;
  DatabaseFaults faults;
};

Chats loadChats(WorkingCopies::WorkingCopy copy, const ChatStorageReader::Setting& setting) {
  Chats chats{.tables = readChats(copy.path, setting), .faults = std::move(copy.faults)};
  SQLiteDB database(PathText::text(copy.path), SQLiteDB::OpenMode::readOnly);
  database.cancelWhen(setting.isCancelled);
  if (!database.tableExists(messageTable)) throw TidewellError::chatStorageUnreadable(noMessages);
  if (MissingMessages::areAll(chats.tables)) throw TidewellError::chatStorageUnreadable(noChats);
  chats.faults.merge(DatabaseCheck::within(database, chatTables));
  return chats;
}

// What could be read of a database without which chats can be read too.
template <typename Value>
struct Side {
  Value value;
  DatabaseFaults faults;
};

// Whether the backup has no copy of a file to give, or no key that opens it.
bool isNotToBeHad(const TidewellError& error) {
  return error.is<TidewellError::ChatStorageUnreadable>() || error.is<TidewellError::IOFailure>() ||
         error.is<TidewellError::WrongBackupPassword>();
}

// Reads one. `load` is given a copy and fills the value; false where the tables are not as every phone has them.
template <typename Value, typename Load>
Side<Value> readSide(const OpenedBackup& opened, const StoredDatabase& stored, const CancellationCheck& isCancelled,
                     std::span<const DatabaseTable> tables, Load load) try {
  return WorkingCopies::use(opened, stored, isCancelled, [&](WorkingCopies::WorkingCopy copy) {
    Side<Value> side{.faults = std::move(copy.faults)};
    try {
      if (!load(copy.path, side.value)) side.faults.insert(DatabaseFault::damaged);
      const SQLiteDB database(PathText::text(copy.path), SQLiteDB::OpenMode::readOnly);
      side.faults.merge(DatabaseCheck::within(database, tables));
    } catch (const TidewellError& error) {
      if (!DatabaseCheck::isOfItsDatabase(error)) throw;
      side.faults.insert(DatabaseFault::damaged);
    }
    return side;
  });
} catch (const TidewellError& error) {
  if (!isNotToBeHad(error)) throw;
  return {.faults = {DatabaseFault::damaged}};
}

// Without them people are known by their numbers and calls are not told, so damage ends nothing.
// Folders keep the names they get, so what may have failed for a moment is read once more.
template <typename Value, typename Load>
Side<Value> loadSide(const OpenedBackup& opened, const StoredDatabase& stored, const CancellationCheck& isCancelled,
                     std::span<const DatabaseTable> tables, Load load) {
  if (!stored.file) return {.faults = stored.isLost ? DatabaseFaults{DatabaseFault::damaged} : DatabaseFaults()};
  Side<Value> side = readSide<Value>(opened, stored, isCancelled, tables, load);
  if (side.faults.contains(DatabaseFault::damaged)) side = readSide<Value>(opened, stored, isCancelled, tables, load);
  throwIfCancelled(isCancelled);
  return side;
}

// What this backup knows of people and calls beside its chats.
struct Sides {
  Side<std::vector<AddressBookContact>> contacts;
  Side<std::vector<LinkedIdentity>> identities;
  Side<std::vector<PastCall>> calls;
};

Sides loadSides(const OpenedBackup& opened, const ManifestStore& manifest, const CancellationCheck& isCancelled) {
  Sides sides;
  const StoredDatabase contacts{manifest.contacts, manifest.contactsWAL, manifest.contactsSHM,
                                manifest.contactsRollback, manifest.isWithoutItsContacts};
  sides.contacts =
      loadSide<std::vector<AddressBookContact>>(opened, contacts, isCancelled, contactTables, ContactsReader::load);
  sides.identities = loadSide<std::vector<LinkedIdentity>>(opened, manifest.identities, isCancelled, identityTables,
                                                           LinkedIdentities::load);
  sides.calls =
      loadSide<std::vector<PastCall>>(opened, manifest.callHistory, isCancelled, callTables, CallHistoryReader::load);
  return sides;
}

// Chats, with all that the other databases add to them.
ChatStorageSnapshot putTogether(ChatTables tables, Sides& sides) {
  tables.directory = ContactsReader::directory(sides.contacts.value, std::move(tables.directory));
  for (const LinkedIdentity& identity : sides.identities.value) {
    if (identity.phoneJID) tables.directory.link(identity.lid, *identity.phoneJID);
    if (identity.name) tables.directory.addPushName(identity.lid, *identity.name);
  }
  CallsInChats::add(std::move(sides.calls.value), tables);
  return ChatStorageSnapshot(std::move(tables));
}

// A phone keeps the files of messages: where there are files and items of media, and
// not one of these names a file, their paths cannot be read.
bool areLinksLost(const ChatStorageSnapshot& snapshot, const ManifestStore& manifest) {
  const auto isOfTheseChats = [&](const ManifestFile& file) { return file.domain == manifest.chatStorage->domain; };
  return manifest.chatStorage && snapshot.unread().namelessItems > 0 &&
         std::ranges::any_of(manifest.media, isOfTheseChats);
}

}  // namespace

SnapshotLoader::Loaded SnapshotLoader::load(const OpenedBackup& opened, const ManifestStore& manifest,
                                            const CancellationCheck& isCancelled) {
  Chats chats;
  if (manifest.chatStorage) {
    const StoredDatabase stored{manifest.chatStorage, manifest.chatStorageWAL, manifest.chatStorageSHM,
                                manifest.chatStorageRollback};
    const ChatStorageReader::Setting setting{.hasFile = filesOf(manifest), .isCancelled = isCancelled};
    chats = WorkingCopies::use(opened, stored, isCancelled,
                               [&](WorkingCopies::WorkingCopy copy) { return loadChats(std::move(copy), setting); });
  }
  throwIfCancelled(isCancelled);
  Sides sides = loadSides(opened, manifest, isCancelled);
  Loaded loaded{.snapshot = putTogether(std::move(chats.tables), sides)};
  const bool isDamaged = MissingMessages::mayBeMissing(loaded.snapshot) || areLinksLost(loaded.snapshot, manifest);
  if (isDamaged) chats.faults.insert(DatabaseFault::damaged);
  append(loaded.warnings, BackupDatabase::chats, chats.faults);
  std::ranges::move(MissingMessages::warnings(loaded.snapshot), std::back_inserter(loaded.warnings));
  append(loaded.warnings, BackupDatabase::contacts, sides.contacts.faults);
  append(loaded.warnings, BackupDatabase::identities, sides.identities.faults);
  append(loaded.warnings, BackupDatabase::calls, sides.calls.faults);
  if (UnlistedFiles::areThere(opened, manifest, loaded.snapshot, isCancelled)) {
    append(loaded.warnings, BackupDatabase::index, {DatabaseFault::damaged});
  }
  std::ranges::move(UnreadApps::warnings(manifest), std::back_inserter(loaded.warnings));
  return loaded;
}
