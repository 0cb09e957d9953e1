#include "TidewellCore/Library/LibraryFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

#include "TidewellCore/Library/LibraryCheck.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteHeader.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t applicationID = 0x54574C42;  // "TWLB"; in the header of the file (sqlite.org/fileformat2)
constexpr std::int64_t schemaVersion = 3;

using Statements = std::vector<std::string_view>;

// Versions 1 and 2 are brought up to this one. What follows is in the words that SQLite keeps when it adds columns.

// The tables that stand as version 1 made them.
constexpr std::array ofAllVersions{
    "CREATE TABLE owner (jid TEXT PRIMARY KEY NOT NULL) WITHOUT ROWID",
    "CREATE TABLE export (id INTEGER PRIMARY KEY, at REAL NOT NULL, device TEXT, device_name TEXT, backup_at REAL,"
    " zone TEXT NOT NULL, locale TEXT NOT NULL)",
    "CREATE TABLE chat (id INTEGER PRIMARY KEY, jid TEXT NOT NULL UNIQUE, name TEXT NOT NULL, page TEXT NOT NULL "
    "UNIQUE,"
    " partner TEXT NOT NULL, avatar TEXT, gone INTEGER NOT NULL, told_at REAL NOT NULL, told BLOB, changed INTEGER NOT "
    "NULL)",
    "CREATE TABLE chat_jid (jid TEXT PRIMARY KEY NOT NULL, chat INTEGER NOT NULL) WITHOUT ROWID",
    "CREATE TABLE sender (id INTEGER PRIMARY KEY, jid TEXT NOT NULL, name TEXT)",
    "CREATE TABLE person (jid TEXT PRIMARY KEY NOT NULL, name TEXT, owner INTEGER NOT NULL) WITHOUT ROWID",
};

// Those that this version has otherwise, as version 1 had them.
constexpr std::array onlyOfVersion1{
    "CREATE TABLE medium (id INTEGER PRIMARY KEY, path TEXT NOT NULL, folder TEXT, name TEXT, size INTEGER,"
    " date REAL, kind TEXT NOT NULL, chat TEXT NOT NULL, there INTEGER NOT NULL)",
    "CREATE TABLE message (chat INTEGER NOT NULL, key INTEGER NOT NULL, time REAL, place INTEGER NOT NULL,"
    " from_me INTEGER NOT NULL, last_told REAL, deleted_later INTEGER NOT NULL, sender INTEGER, stanza TEXT,"
    " text TEXT, medium INTEGER, facts TEXT, page TEXT, PRIMARY KEY (chat, key)) WITHOUT ROWID",
};
constexpr std::array onlyOfVersion2{
    "CREATE TABLE medium (id INTEGER PRIMARY KEY, path TEXT NOT NULL, folder TEXT, name TEXT, size INTEGER,"
    " date REAL, kind TEXT NOT NULL, chat TEXT NOT NULL, there INTEGER NOT NULL, digest TEXT, sent_digest TEXT)",
};
constexpr std::array sinceVersion3{
    "CREATE TABLE medium (id INTEGER PRIMARY KEY, path TEXT NOT NULL, folder TEXT, name TEXT, size INTEGER,"
    " date REAL, kind TEXT NOT NULL, chat TEXT NOT NULL, there INTEGER NOT NULL, digest TEXT, sent_digest TEXT,"
    " doubtful INTEGER)",
};
constexpr std::array sinceVersion2{
    "CREATE TABLE message (chat INTEGER NOT NULL, key INTEGER NOT NULL, time REAL, place INTEGER NOT NULL,"
    " from_me INTEGER NOT NULL, last_told REAL, deleted_later INTEGER NOT NULL, sender INTEGER, stanza TEXT,"
    " text TEXT, medium INTEGER, facts TEXT, page TEXT, said_at REAL, PRIMARY KEY (chat, key)) WITHOUT ROWID",
};
// Those that version 1 lacked.
constexpr std::array addedByVersion2{
    "CREATE TABLE title (chat INTEGER NOT NULL, name TEXT NOT NULL, PRIMARY KEY (chat, name)) WITHOUT ROWID",
    "CREATE TABLE member (chat INTEGER NOT NULL, jid TEXT NOT NULL, last_told REAL, PRIMARY KEY (chat, jid))"
    " WITHOUT ROWID",
    "CREATE TABLE rendering (chat INTEGER PRIMARY KEY, changed INTEGER NOT NULL, manner BLOB NOT NULL,"
    " folder TEXT NOT NULL, files TEXT NOT NULL, shelf INTEGER NOT NULL, messages INTEGER NOT NULL, preview TEXT NOT "
    "NULL, last REAL,"
    " absent TEXT NOT NULL)",
    "CREATE TABLE block (shelf INTEGER NOT NULL, place INTEGER NOT NULL, file TEXT NOT NULL, size INTEGER NOT NULL,"
    " parts TEXT NOT NULL, PRIMARY KEY (shelf, place)) WITHOUT ROWID",
};

constexpr std::array changesOfVersion2{
    "ALTER TABLE medium ADD COLUMN digest TEXT",
    "ALTER TABLE medium ADD COLUMN sent_digest TEXT",
    "ALTER TABLE message ADD COLUMN said_at REAL",
};
constexpr std::array changesOfVersion3{
    "ALTER TABLE medium ADD COLUMN doubtful INTEGER",
};

void append(Statements& statements, std::span<const char* const> more) {
  statements.insert(statements.end(), more.begin(), more.end());
}

Statements tablesOf(std::int64_t version) {
  Statements tables(ofAllVersions.begin(), ofAllVersions.end());
  if (version == 1) append(tables, onlyOfVersion1);
  if (version == 2) append(tables, onlyOfVersion2);
  if (version >= 3) append(tables, sinceVersion3);
  if (version >= 2) append(tables, sinceVersion2);
  if (version >= 2) append(tables, addedByVersion2);
  return tables;
}

// What makes one of an earlier version this version's.
Statements changesSince(std::int64_t version) {
  Statements changes;
  if (version < 2) append(changes, changesOfVersion2);
  if (version < 2) append(changes, addedByVersion2);
  if (version < 3) append(changes, changesOfVersion3);
  return changes;
}

std::int64_t numberOf(const SQLiteDB& database, const std::string& pragma) {
  std::int64_t number = 0;
  database.forEachRow(pragma, [&](const SQLiteRowView& row) { number = row.integer(0).value_or(0); });
  return number;
}

void execute(const SQLiteDB& database, std::string_view sql) {
  database.forEachRow(std::string(sql), [](const SQLiteRowView&) {});
}

void makeTables(const SQLiteDB& database) {
  SQLiteTransaction transaction(database);
  for (const std::string_view statement : tablesOf(schemaVersion)) execute(database, statement);
  execute(database, fmt::format("PRAGMA application_id = {}", applicationID));
  execute(database, fmt::format("PRAGMA user_version = {}", schemaVersion));
  transaction.commit();
}

std::int64_t versionOf(const SQLiteDB& database) { return numberOf(database, "PRAGMA user_version"); }

// Whether every table stands as its version makes it; SQLite keeps the words in which it was made.
bool hasTables(const SQLiteDB& database) {
  const Statements tables = tablesOf(versionOf(database));
  std::size_t found = 0;
  database.forEachRow("SELECT sql FROM sqlite_master WHERE sql IS NOT NULL", [&](const SQLiteRowView& row) {
    found += std::ranges::find(tables, row.text(0).value_or("")) == tables.end() ? 0U : 1U;
  });
  return found == tables.size();
}

bool isSound(const SQLiteDB& database) {
  bool isSound = true;
  database.forEachRow("PRAGMA quick_check(1)", [&](const SQLiteRowView& row) { isSound = row.text(0) == "ok"; });
  return isSound;
}

void requireNotLater(const SQLiteDB& database) {
  if (numberOf(database, "PRAGMA application_id") != applicationID) return;
  if (versionOf(database) <= schemaVersion) return;
  throw LaterLibrary(TidewellError::IOFailure{
      "A newer version of this program wrote this export’s library. Use that version, or choose another folder."});
}

void requireThat(bool isSo) {
  if (!isSo) throw SQLiteDamage(TidewellError::InvalidDatabase{"It is no sound library."});
}

SQLiteDB ourDatabase(const fs::path& file, SQLiteDB::OpenMode mode) {
  SQLiteDB database(PathText::text(file), mode);
  requireNotLater(database);
  requireThat(numberOf(database, "PRAGMA application_id") == applicationID && versionOf(database) >= 1);
  requireThat(hasTables(database));
  return database;
}

bool isInWALMode(const fs::path& file) {
  const auto header = SQLiteHeader::read(file);
  return header && header->isWAL;
}

// Another tool may have left it with a write-ahead log, which SQLite finds by its name. Alone with the file, as we are,
// it reads such a log without memory that is shared, and brings the file up to it.
void leaveWALMode(const fs::path& file) {
  const fs::path log = file.native() + "-wal";
  const Files::Kind kind = Files::kindOf(log);
  if (kind != Files::Kind::nothing && kind != Files::Kind::file) MakeRoom::at(log);
  if (kind != Files::Kind::file && !isInWALMode(file)) return;
  const SQLiteDB database(PathText::text(file), SQLiteDB::OpenMode::kept);
  execute(database, "PRAGMA locking_mode = EXCLUSIVE");
  execute(database, "PRAGMA journal_mode = DELETE");
}

// What a run that was killed had begun is undone when it is opened; of a new one nothing is left then.
bool isUndone(const fs::path& file) {
  const SQLiteDB database(PathText::text(file), SQLiteDB::OpenMode::kept);
  return numberOf(database, "PRAGMA page_count") == 0;
}

void bringUpToDate(const SQLiteDB& database) {
  const std::int64_t version = versionOf(database);
  if (version == schemaVersion) return;
  SQLiteTransaction transaction(database);
  for (const std::string_view change : changesSince(version)) execute(database, change);
  execute(database, fmt::format("PRAGMA user_version = {}", schemaVersion));
  transaction.commit();
}

SQLiteDB soundDatabase(const fs::path& file) {
  SQLiteDB database = ourDatabase(file, SQLiteDB::OpenMode::kept);
  requireThat(isSound(database));
  LibraryCheck::requireConsistent(database);
  bringUpToDate(database);
  return database;
}

}  // namespace

LibraryFile LibraryFile::open(const fs::path& contentRoot) {
  if (auto library = openIfThere(contentRoot)) return std::move(*library);
  SQLiteDB database(PathText::text(contentRoot / fileName), SQLiteDB::OpenMode::kept);
  makeTables(database);
  return LibraryFile(std::move(database));
}

// One of no bytes is what a power cut leaves of a new one.
std::optional<LibraryFile> LibraryFile::openIfThere(const fs::path& contentRoot) {
  const fs::path file = contentRoot / fileName;
  const Files::Kind kind = Files::kindOf(file);
  if (kind == Files::Kind::nothing) return std::nullopt;
  if (kind != Files::Kind::file) throw SQLiteDamage(TidewellError::InvalidDatabase{"It is no file."});
  if (Files::regularFileSize(file) == 0) return std::nullopt;
  leaveWALMode(file);
  if (isUndone(file)) return std::nullopt;
  return LibraryFile(soundDatabase(file));
}

// What is no file could be waited for without end.
SQLiteDB LibraryFile::look(const fs::path& contentRoot) {
  requireThat(Files::kindOf(contentRoot / fileName) == Files::Kind::file);
  requireThat(Files::kindOf(contentRoot / journalName) == Files::Kind::nothing);
  return ourDatabase(contentRoot / fileName, SQLiteDB::OpenMode::keptReadOnly);
}

std::string LibraryFile::adviceForDamaged() {
  return fmt::format(
      "The library “{}” is damaged. Export again: it is set aside, and made anew from the pages and the backup.",
      fileName);
}

void LibraryFile::setAside(const fs::path& contentRoot) {
  MakeRoom::at(contentRoot / fileName);
  MakeRoom::at(contentRoot / journalName);
}

bool LibraryFile::wasSetAside(const fs::path& contentRoot) { return MakeRoom::wasMadeAt(contentRoot / fileName); }
