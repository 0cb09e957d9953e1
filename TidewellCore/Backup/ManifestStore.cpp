#include "TidewellCore/Backup/ManifestStore.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/Backup/StoredFileLocation.h"
#include "TidewellCore/Crypto/MBFileArchive.h"
#include "TidewellCore/MediaKind.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/TidewellError.h"

namespace {

// The consumer app and the business app.
constexpr const char* wantedDomains =
    "(domain LIKE '%whatsapp.WhatsApp.shared' OR domain LIKE '%whatsapp.WhatsAppSMB.shared')";
constexpr std::array tables{DatabaseTable{.name = "Files"}};
constexpr std::array<const char*, 4> requiredColumns{"FILEID", "DOMAIN", "RELATIVEPATH", "FLAGS"};

constexpr std::uint32_t unprotected = 0;  // a protection class

// In the column of flags.
constexpr std::int64_t regularFile = 1;
constexpr std::int64_t folder = 2;
constexpr std::int64_t link = 4;

constexpr const char* chatStorageName = "ChatStorage.sqlite";
constexpr const char* contactsName = "ContactsV2.sqlite";
constexpr const char* callHistoryName = "CallHistory.sqlite";
constexpr const char* identitiesName = "LID.sqlite";
constexpr std::array databaseNames{chatStorageName, contactsName, callHistoryName, identitiesName};
constexpr std::array companionEndings{"", "-wal", "-shm", "-journal"};

std::string interestingPaths() {
  std::string names;
  for (const char* name : databaseNames) {
    for (const char* ending : companionEndings) names += fmt::format("'{}{}', ", name, ending);
  }
  names.resize(names.size() - 2);
  return fmt::format(
      "(relativePath IN ({}) OR relativePath LIKE 'Message/Media/%' OR relativePath LIKE 'Media/Profile/%')", names);
}

// The columns of the selection.
enum Column : int { rowKey, fileID, domain, relativePath, flags, isOfApp, isInteresting, record };

// WhatsApp's rows, and those that damage to one column keeps from being taken
// for them. All rows are looked at, and faster so than by way of an index, which
// may be damaged itself.
std::string selection(bool hasRecords) {
  return fmt::format(
      "SELECT rowid, fileID, domain, relativePath, flags, {0}, {1}{2}\nFROM Files NOT INDEXED\nWHERE {0} OR {1}",
      wantedDomains, interestingPaths(), hasRecords ? ", file" : "");
}

// Returns whether the index keeps a record of each file.
bool checkSchema(const SQLiteDB& database) {
  if (!database.tableExists("Files")) throw TidewellError::invalidDatabase("Manifest.db has no Files table.");
  const std::set<std::string> columns = database.columns("Files");
  for (const char* column : requiredColumns) {
    if (columns.contains(column)) continue;
    throw TidewellError::invalidDatabase("Manifest.db is missing column " + std::string(column) + ".");
  }
  return columns.contains("FILE");
}

ManifestFile readNames(const SQLiteRowView& row) {
  return {.fileID = std::string(row.text(fileID).value_or("")),
          .domain = std::string(row.text(domain).value_or("")),
          .relativePath = std::string(row.text(relativePath).value_or("")),
          .flags = row.integer(flags).value_or(0)};
}

void readRecord(ByteView bytes, ManifestFile& file) {
  MBFileArchive::Metadata metadata = MBFileArchive::metadata(bytes);
  file.encryptionKey = std::move(metadata.encryptionKey);
  file.plaintextSize = metadata.size;
  file.isUnprotected = metadata.protectionClass == unprotected;
}

bool isFolderOrLink(const ManifestFile& file) { return file.flags == folder || file.flags == link; }

bool isSound(const ManifestFile& file) {
  return file.flags == regularFile && file.fileID == fileIdentifier(file.domain, file.relativePath);
}

// How many rows there are, and the sum of their keys: enough to tell that one is another.
struct Tally {
  std::int64_t count = 0;
  std::int64_t keys = 0;

  void add(std::int64_t key) {
    ++count;
    keys = saturatingAdd(keys, key);
  }
  bool operator==(const Tally&) const = default;
};

// What the table says of WhatsApp's files.
struct Listing {
  std::vector<ManifestFile> files;
  Tally ofApp;  // with its folders and links
  std::int64_t sound = 0;
  std::int64_t damaged = 0;  // whose names do not fit their identifiers, or that are of no kind

  // Where most do not fit, the identifiers were made in another way.
  std::int64_t damagedNames() const { return damaged < sound ? damaged : 0; }
};

void take(const SQLiteRowView& row, bool hasRecords, Listing& listing) {
  const bool isTheApps = row.integer(isOfApp) == 1;
  if (isTheApps) listing.ofApp.add(row.integer(rowKey).value_or(0));
  ManifestFile file = readNames(row);
  if (isFolderOrLink(file)) return;
  ++(isSound(file) ? listing.sound : listing.damaged);
  if (!isTheApps || row.integer(isInteresting) != 1 || file.flags != regularFile) return;
  if (const auto bytes = hasRecords ? row.blob(record) : std::nullopt) readRecord(*bytes, file);
  listing.files.push_back(std::move(file));
}

Listing readFiles(const SQLiteDB& database, const CancellationCheck& isCancelled) {
  Listing listing;
  CancellationPoint cancellation(isCancelled);
  const bool hasRecords = checkSchema(database);
  database.forEachRow(selection(hasRecords), [&](const SQLiteRowView& row) {
    cancellation.step();
    take(row, hasRecords, listing);
  });
  return listing;
}

// Whether the index of domains knows the same rows of WhatsApp's. Damage that takes a domain and a path at once, as
// one flipped bit does before decryption, leaves no other trace.
bool areAllListed(const SQLiteDB& database, const Listing& listing) {
  const std::string index = DatabaseCheck::indexOf(database, {.name = "Files", .reference = "domain"});
  if (index.empty()) return true;
  Tally known;
  database.forEachRow(fmt::format("SELECT rowid FROM Files INDEXED BY {} WHERE {}", index, wantedDomains),
                      [&](const SQLiteRowView& row) { known.add(row.integer(0).value_or(0)); });
  return known == listing.ofApp;
}

void sortIntoLists(ManifestStore& store) {
  for (const ManifestFile& file : store.files) {
    if (file.relativePath.starts_with("Media/Profile/")) {
      store.profilePictures.push_back(file);
    } else if (file.relativePath.starts_with("Message/Media/")) {
      const bool isThumbnail = MediaKind::isSkippedThumbnail(PathText::lastComponent(file.relativePath));
      (isThumbnail ? store.skippedThumbnails : store.media).push_back(file);
    }
  }
}

// The first file of that path, of one app's container when `domain` is given.
std::optional<ManifestFile> firstFile(const ManifestStore& store, const std::string& path,
                                      const std::optional<std::string>& domain = std::nullopt) {
  const auto found = std::ranges::find_if(store.files, [&](const ManifestFile& file) {
    return file.relativePath == path && (!domain || file.domain == *domain);
  });
  return found == store.files.end() ? std::nullopt : std::optional(*found);
}

// A journal fits only the database beside which it was written, so it is
// taken from the same container.
std::optional<ManifestFile> companion(const ManifestStore& store, const std::optional<ManifestFile>& database,
                                      const char* ending) {
  if (!database) return std::nullopt;
  return firstFile(store, database->relativePath + ending, database->domain);
}

// Whether there is a file beside a database of that name, of one app's container when `domain` is given.
bool hasFileBeside(const ManifestStore& store, const char* name,
                   const std::optional<std::string>& domain = std::nullopt) {
  return std::ranges::any_of(companionEndings, [&](const char* ending) {
    return firstFile(store, std::string(name) + ending, domain).has_value();
  });
}

// Of the app whose chats are read.
StoredDatabase storedDatabase(const ManifestStore& store, const char* name) {
  StoredDatabase stored{.file = firstFile(store, name, store.chatStorage->domain)};
  stored.wal = companion(store, stored.file, "-wal");
  stored.shm = companion(store, stored.file, "-shm");
  stored.rollback = companion(store, stored.file, "-journal");
  stored.isLost = !stored.file && hasFileBeside(store, name, store.chatStorage->domain);
  return stored;
}

void pickDatabases(ManifestStore& store) {
  store.chatStorage = firstFile(store, chatStorageName);
  if (store.chatStorage) store.contacts = firstFile(store, contactsName, store.chatStorage->domain);
  if (!store.contacts) store.contacts = firstFile(store, contactsName);
  if (store.chatStorage) {
    store.callHistory = storedDatabase(store, callHistoryName);
    store.identities = storedDatabase(store, identitiesName);
  }
  store.chatStorageWAL = companion(store, store.chatStorage, "-wal");
  store.chatStorageSHM = companion(store, store.chatStorage, "-shm");
  store.chatStorageRollback = companion(store, store.chatStorage, "-journal");
  store.contactsWAL = companion(store, store.contacts, "-wal");
  store.contactsSHM = companion(store, store.contacts, "-shm");
  store.contactsRollback = companion(store, store.contacts, "-journal");
  store.isWithoutItsContacts = !store.contacts && hasFileBeside(store, contactsName);
}

}  // namespace

ManifestStore ManifestStore::load(const std::filesystem::path& backup,
                                  const std::optional<std::filesystem::path>& manifestDatabase, bool isWritableCopy,
                                  const CancellationCheck& isCancelled) {
  const std::filesystem::path index = manifestDatabase.value_or(backup / "Manifest.db");
  if (!Files::isRegularFile(index)) throw TidewellError::missingManifestDB();
  DatabaseFaults faults =
      DatabaseCheck::beforeOpening(index, std::nullopt, SQLiteWALIndex::read(backup / "Manifest.db-shm"));
  const SQLiteDB database(PathText::text(index),
                          isWritableCopy ? SQLiteDB::OpenMode::writableCopy : SQLiteDB::OpenMode::readOnly,
                          isWritableCopy ? "open decrypted Manifest.db" : "open Manifest.db");
  Listing listing = readFiles(database, isCancelled);
  faults.merge(DatabaseCheck::within(database, tables));
  if (!areAllListed(database, listing)) faults.insert(DatabaseFault::damaged);
  ManifestStore store{.files = std::move(listing.files),
                      .warnings = DatabaseCheck::warnings(BackupDatabase::index, faults)};
  if (listing.damagedNames() > 0) store.warnings.push_back(DatabaseCheck::damagedNames(listing.damagedNames()));
  pickDatabases(store);
  sortIntoLists(store);
  return store;
}
