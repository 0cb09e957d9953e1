#include "TidewellCore/Backup/DatabaseCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <string_view>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/SQLiteHeader.h"
#include "TidewellCore/Platform/SQLiteWAL.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

// SQLite's words for it. It also fails where an index is in an order that only
// the app knows, which keeps nobody from reading the table.
constexpr const char* malformed = "database disk image is malformed";

std::int64_t numberOf(const SQLiteDB& database, const std::string& sql, const char* column) {
  std::int64_t number = 0;
  database.query(sql, {}, [&](const SQLiteRow& row) { number = row.intValue(column).value_or(0); });
  return number;
}

std::int64_t sizeOf(const SQLiteDB& database) {
  return numberOf(database, "PRAGMA page_count", "page_count") * numberOf(database, "PRAGMA page_size", "page_size");
}

bool isPlain(std::string_view name) {
  const auto isPlainCharacter = [](unsigned char c) { return c == '_' || (c < 0x80 && std::isalnum(c) != 0); };
  return !name.empty() && std::ranges::all_of(name, isPlainCharacter);
}

// What a table and its index agree on: the number of rows and of references, and
// the sums of both, since a damaged page may show one row twice and another not.
bool agreesWithItsIndex(const SQLiteDB& database, const DatabaseTable& table) {
  const std::string index = DatabaseCheck::indexOf(database, table);
  const std::string values = index.empty() ? "" : fmt::format(", count({0}), total({0})", table.reference);
  const auto tally = [&](const std::string& way) {
    std::vector<SQLiteValue> result;
    database.query(fmt::format("SELECT count(*), total(rowid){} FROM {} {}", values, table.name, way), {},
                   [&](const SQLiteRow& row) { result = row.values; });
    return result;
  };
  // Without a known index SQLite takes the smallest there is.
  return tally(index.empty() ? "" : "INDEXED BY " + index) == tally("NOT INDEXED");
}

// Phones declare every column with a type of one word. Where one bit takes the comma
// between two columns, SQLite takes the second for a part of the first one's type,
// and reads for every column behind them the value of its neighbour.
bool areColumnsApart(const SQLiteDB& database, const DatabaseTable& table) {
  bool areApart = true;
  database.query(std::string("PRAGMA table_info(") + table.name + ")", {}, [&](const SQLiteRow& row) {
    const std::string type = row.textValue("type").value_or("");
    areApart = areApart && type.find_first_of(" \t\r\n\f") == std::string::npos;
  });
  return areApart;
}

// Checks that the schema itself brings along could keep this busy for ever.
bool isSoundIn(const SQLiteDB& database, const std::string& check) {
  database.query("PRAGMA ignore_check_constraints = ON", {}, [](const SQLiteRow&) {});
  bool isFit = true;
  database.query(check, {},
                 [&](const SQLiteRow& row) { isFit = isFit && row.values.front() == SQLiteValue(std::string("ok")); });
  return isFit;
}

bool isTableWhole(const SQLiteDB& database, const DatabaseTable& table) {
  const SQLiteDB::Kind kind = database.kindOf(table.name);
  if (kind == SQLiteDB::Kind::none) return true;
  if (kind != SQLiteDB::Kind::table || !areColumnsApart(database, table)) return false;
  if (table.isShort && !isSoundIn(database, fmt::format("PRAGMA quick_check({})", table.name))) return false;
  return agreesWithItsIndex(database, table);
}

// A table is called twice in a schema. Where the names differ, one is damaged, and what is asked for seems not to be
// there.
bool areNamesWhole(const SQLiteDB& database) {
  return numberOf(database,
                  "SELECT count(*) AS n FROM sqlite_master WHERE rootpage > 0 AND sql LIKE 'CREATE TABLE%' AND "
                  "(type <> 'table' OR typeof(name) <> 'text' OR typeof(tbl_name) <> 'text' OR name <> tbl_name)",
                  "n") == 0;
}

bool doPagesFit(const SQLiteDB& database) {
  return sizeOf(database) > DatabaseCheck::largestForPages || isSoundIn(database, "PRAGMA quick_check(1)");
}

// What cannot be asked of a database says nothing of it.
bool isFine(const std::function<bool()>& question) {
  try {
    return question();
  } catch (const TidewellError& error) {
    return error != TidewellError::invalidDatabase(malformed);
  }
}

bool isWhole(const SQLiteDB& database, std::span<const DatabaseTable> tables) {
  const auto isFineTable = [&](const DatabaseTable& table) {
    return isFine([&] { return isTableWhole(database, table); });
  };
  return isFine([&] { return areNamesWhole(database); }) && std::ranges::all_of(tables, isFineTable) &&
         isFine([&] { return doPagesFit(database); });
}

}  // namespace

DatabaseFaults DatabaseCheck::beforeOpening(const fs::path& database, std::optional<std::int64_t> recordedJournalSize,
                                            const std::optional<SQLiteWALIndex>& journalIndex) {
  DatabaseFaults faults;
  const fs::path log = database.native() + "-wal";
  const bool isWithoutJournal = Files::kindOf(log) == Files::Kind::nothing || Files::regularFileSize(log) == 0;
  if (isWithoutJournal && journalIndex && journalIndex->hasPendingFrames())
    faults.insert(DatabaseFault::journalMissing);
  const SQLiteWAL journal = SQLiteWAL::read(log, recordedJournalSize, journalIndex);
  const auto header = SQLiteHeader::read(database);
  const bool isPassedOver = header && !header->isWAL && journal.frameCount > 0;
  if (journal.isDamaged() || isPassedOver) faults.insert(DatabaseFault::journalDamaged);
  const std::int64_t size = Files::regularFileSize(database).value_or(0);
  const bool isShort = header && size < header->databaseSize;
  if (isShort && !journal.completes(log, size)) faults.insert(DatabaseFault::damaged);
  return faults;
}

DatabaseFaults DatabaseCheck::within(const SQLiteDB& database, std::span<const DatabaseTable> tables) {
  return isWhole(database, tables) ? DatabaseFaults() : DatabaseFaults{DatabaseFault::damaged};
}

bool DatabaseCheck::isOfItsDatabase(const TidewellError& error) {
  constexpr std::array words{"disk I/O error", "database or disk is full", "unable to open database file",
                             "out of memory"};
  return error.is<TidewellError::InvalidDatabase>() &&
         std::ranges::none_of(words, [&](const char* text) { return error == TidewellError::invalidDatabase(text); });
}

std::string DatabaseCheck::indexOf(const SQLiteDB& database, const DatabaseTable& table) {
  if (table.reference == nullptr) return {};
  std::string found;
  database.query(
      "SELECT list.name AS name FROM pragma_index_list(?1) AS list, pragma_index_info(list.name) AS info "
      "WHERE list.partial = 0 AND info.seqno = 0 AND info.name = ?2",
      {table.name, table.reference}, [&](const SQLiteRow& row) {
        const std::string name = row.textValue("name").value_or("");
        if (isPlain(name)) found = name;
      });
  return found;
}

const std::array<DatabaseCheck::Sentence, 15> DatabaseCheck::sentences{{
    {BackupDatabase::index, DatabaseFault::journalMissing,
     "The newest files may be missing: the journal of the backup’s file index cannot be read. Copy the backup again "
     "from where it came, or make a new one with the iPhone."},
    {BackupDatabase::index, DatabaseFault::journalDamaged,
     "The newest files may be missing: the journal of the backup’s file index is damaged. Copy the backup again from "
     "where it came, or make a new one with the iPhone."},
    {BackupDatabase::index, DatabaseFault::damaged,
     "Some files may be missing: the backup’s file index is damaged. Copy the backup again from where it came, or make "
     "a new one with the iPhone."},
    {BackupDatabase::chats, DatabaseFault::journalMissing,
     "The newest messages may be missing: the journal of WhatsApp’s chat database is not in this backup. Copy the "
     "backup again from where it came, or make a new one with the iPhone."},
    {BackupDatabase::chats, DatabaseFault::journalDamaged,
     "The newest messages may be missing: the journal of WhatsApp’s chat database is damaged. Copy the backup again "
     "from where it came, or make a new one with the iPhone."},
    {BackupDatabase::chats, DatabaseFault::damaged,
     "Some messages may be missing: WhatsApp’s chat database is damaged. Copy the backup again from where it came, or "
     "make a new one with the iPhone."},
    {BackupDatabase::contacts, DatabaseFault::journalMissing,
     "The newest names may be missing: the journal of WhatsApp’s contacts is not in this backup. Copy the backup again "
     "from where it came, or make a new one with the iPhone."},
    {BackupDatabase::contacts, DatabaseFault::journalDamaged,
     "The newest names may be missing: the journal of WhatsApp’s contacts is damaged. Copy the backup again from where "
     "it came, or make a new one with the iPhone."},
    {BackupDatabase::contacts, DatabaseFault::damaged,
     "Some names may be missing: the database of WhatsApp’s contacts is damaged. Copy the backup again from where it "
     "came, or make a new one with the iPhone."},
    {BackupDatabase::calls, DatabaseFault::journalMissing,
     "The newest calls may be missing: the journal of WhatsApp’s list of calls is not in this backup. Copy the backup "
     "again from where it came, or make a new one with the iPhone."},
    {BackupDatabase::calls, DatabaseFault::journalDamaged,
     "The newest calls may be missing: the journal of WhatsApp’s list of calls is damaged. Copy the backup again from "
     "where it came, or make a new one with the iPhone."},
    {BackupDatabase::calls, DatabaseFault::damaged,
     "Some calls may be missing: WhatsApp’s list of calls is damaged. Copy the backup again from where it came, or "
     "make a new one with the iPhone."},
    {BackupDatabase::identities, DatabaseFault::journalMissing,
     "Some names may be missing: the journal of WhatsApp’s list of anonymous numbers is not in this backup. Copy the "
     "backup again from where it came, or make a new one with the iPhone."},
    {BackupDatabase::identities, DatabaseFault::journalDamaged,
     "Some names may be missing: the journal of WhatsApp’s list of anonymous numbers is damaged. Copy the backup again "
     "from where it came, or make a new one with the iPhone."},
    {BackupDatabase::identities, DatabaseFault::damaged,
     "Some names may be missing: WhatsApp’s list of anonymous numbers is damaged. Copy the backup again from where it "
     "came, or make a new one with the iPhone."},
}};

std::vector<std::string> DatabaseCheck::warnings(BackupDatabase database, const DatabaseFaults& faults) {
  std::vector<std::string> texts;
  for (const Sentence& sentence : sentences) {
    if (sentence.database == database && faults.contains(sentence.fault)) texts.emplace_back(sentence.text);
  }
  return texts;
}

std::string DatabaseCheck::damagedNames(std::int64_t count) {
  return fmt::format(
      "Some files may be missing: {} in the backup’s file index {} damaged. Copy the backup again from where it came, "
      "or make a new one with the iPhone.",
      count == 1 ? "1 name" : fmt::format("{} names", count), count == 1 ? "is" : "are");
}
