#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/SQLValue.h"
#include "Tests/Support/TemporaryDirectory.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Fixture {

// A database as a phone that is in use leaves it; the companions are there for pending rows only.
struct DatabaseFiles {
  Bytes main;
  std::optional<Bytes> wal;
  std::optional<Bytes> shm;
};

// Writes one SQLite database in a temporary folder of its own, in one transaction per section.
// SQLite's random numbers are seeded while a writer lives, which makes the -wal's salts the same
// each time; hence one writer at a time, on one thread. Failures throw std::runtime_error.
class DatabaseWriter {
 public:
  explicit DatabaseWriter(Journal journal);
  ~DatabaseWriter();
  DatabaseWriter(const DatabaseWriter&) = delete;
  DatabaseWriter& operator=(const DatabaseWriter&) = delete;

  void execute(const std::string& sql);
  void insert(std::string_view table, const SQLRow& row);
  // Moves what was written so far into the main file; what follows stays in the -wal file.
  void checkpoint();
  // The files' bytes. Nothing may be written afterwards.
  DatabaseFiles finish();

 private:
  void close();
  sqlite3_stmt* statement(std::string_view table, const SQLRow& row);

  TemporaryDirectory folder_;
  Journal journal_;
  sqlite3* handle_ = nullptr;
  std::map<std::string, sqlite3_stmt*> statements_;
};

// How many of `count` rows stand in the main file when the rest is pending: three quarters,
// rounded down, so that at least one row is pending when there is any.
std::size_t settledCount(std::size_t count);

}  // namespace Fixture
