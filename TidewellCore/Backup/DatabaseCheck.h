#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/SQLiteWALIndex.h"
#include "TidewellCore/TidewellError.h"

// The databases of a backup that are read.
enum class BackupDatabase { index, chats, contacts, calls, identities };

// What is wrong with a database of which rows can be read nevertheless.
enum class DatabaseFault {
  journalMissing,  // what stands only in its journal is not read
  journalDamaged,  // the same, but for what comes before the damage
  damaged,         // its length, its pages or its tables
};
using DatabaseFaults = std::set<DatabaseFault>;

// A table that is read, and the column, if any, by which its rows find their place.
struct DatabaseTable {
  const char* name = "";
  const char* reference = nullptr;  // to a row of another table, by its key
  bool isShort = false;             // so that looking at all of it costs little, however large its database is
};

// Looks for what SQLite passes over in silence (docs/decisions/0018-what-a-damaged-database-tells.md).
namespace DatabaseCheck {

// Looks at a database and at the journal beside it; to be done before SQLite
// opens them, which removes the journal. `recordedJournalSize` is the journal's
// length in bytes as the backup noted it, `journalIndex` the index that the
// backup keeps of it. Throws std::filesystem::filesystem_error when the journal
// is there but cannot be read.
DatabaseFaults beforeOpening(const std::filesystem::path& database,
                             std::optional<std::int64_t> recordedJournalSize = std::nullopt,
                             const std::optional<SQLiteWALIndex>& journalIndex = std::nullopt);

// Looks into a database: whether something stands in for one of `tables`,
// whether these have lost rows, or references, that their indices know otherwise, and
// whether pages fit together: those of short tables, and up to `largestForPages` bytes all.
DatabaseFaults within(const SQLiteDB& database, std::span<const DatabaseTable> tables);

// Whether reading failed for what a database is. It may also fail for what the disk of the working copies, or the
// memory, does not give, and then a database may be whole.
bool isOfItsDatabase(const TidewellError& error);

// The name of an index that holds the table's reference of each row, in that
// order; empty when there is none, or none with a plain name.
std::string indexOf(const SQLiteDB& database, const DatabaseTable& table);

// Looking at all pages takes a fifth of the time that reading all messages does,
// which only a small database can spare.
inline constexpr std::int64_t largestForPages = 16 << 20;

// A fault as people read it, in English: what may be missing, and what to do.
struct Sentence {
  BackupDatabase database = BackupDatabase::index;
  DatabaseFault fault = DatabaseFault::damaged;
  const char* text = "";
};
extern const std::array<Sentence, 15> sentences;
std::vector<std::string> warnings(BackupDatabase database, const DatabaseFaults& faults);
// The same of so many names in the file index that do not fit their identifiers.
std::string damagedNames(std::int64_t count);

}  // namespace DatabaseCheck
