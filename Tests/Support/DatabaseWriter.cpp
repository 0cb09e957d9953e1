#include "Tests/Support/DatabaseWriter.h"

#include <sqlite3.h>

#include <stdexcept>
#include <type_traits>

namespace Fixture {

namespace {

void check(int result, sqlite3* handle, const std::string& sql) {
  if (result == SQLITE_OK || result == SQLITE_DONE || result == SQLITE_ROW) return;
  throw std::runtime_error(std::string(sqlite3_errmsg(handle)) + " in: " + sql);
}

// 0 makes the generator random again.
void seedSQLite(int seed) { sqlite3_test_control(SQLITE_TESTCTRL_PRNG_SEED, seed, nullptr); }

// The value must live until the statement was stepped: SQLite keeps no copy.
void bind(sqlite3_stmt* statement, int index, const SQLValue& value) {
  std::visit(
      [&](const auto& held) {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::int64_t>) {
          sqlite3_bind_int64(statement, index, held);
        } else if constexpr (std::is_same_v<Held, double>) {
          sqlite3_bind_double(statement, index, held);
        } else if constexpr (std::is_same_v<Held, std::string>) {
          sqlite3_bind_text(statement, index, held.data(), static_cast<int>(held.size()), nullptr);
        } else if constexpr (std::is_same_v<Held, Bytes>) {
          sqlite3_bind_blob(statement, index, held.data(), static_cast<int>(held.size()), nullptr);
        } else {
          sqlite3_bind_null(statement, index);
        }
      },
      value);
}

std::string insertSQL(std::string_view table, const SQLRow& row) {
  std::string columns;
  std::string marks;
  for (const auto& [column, value] : row) {
    columns.append(columns.empty() ? "" : ", ").append(column);
    marks.append(marks.empty() ? "?" : ", ?");
  }
  return "INSERT INTO " + std::string(table) + " (" + columns + ") VALUES (" + marks + ")";
}

}  // namespace

DatabaseWriter::DatabaseWriter(Journal journal) : journal_(journal) {
  seedSQLite(1);
  const std::string path = (folder_ / "database").string();
  check(sqlite3_open(path.c_str(), &handle_), handle_, "open");
  execute("PRAGMA page_size = 4096; PRAGMA synchronous = OFF;");
  execute(journal == Journal::rollback ? "PRAGMA journal_mode = DELETE" : "PRAGMA journal_mode = WAL");
  execute("PRAGMA wal_autocheckpoint = 0; BEGIN");
}

DatabaseWriter::~DatabaseWriter() {
  close();
  seedSQLite(0);
}

void DatabaseWriter::close() {
  for (const auto& [sql, statement] : statements_) sqlite3_finalize(statement);
  statements_.clear();
  sqlite3_close(handle_);
  handle_ = nullptr;
}

void DatabaseWriter::execute(const std::string& sql) {
  check(sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr), handle_, sql);
}

sqlite3_stmt* DatabaseWriter::statement(std::string_view table, const SQLRow& row) {
  const std::string sql = insertSQL(table, row);
  sqlite3_stmt*& prepared = statements_[sql];
  if (prepared == nullptr) check(sqlite3_prepare_v2(handle_, sql.c_str(), -1, &prepared, nullptr), handle_, sql);
  return prepared;
}

void DatabaseWriter::insert(std::string_view table, const SQLRow& row) {
  sqlite3_stmt* prepared = statement(table, row);
  int index = 0;
  for (const auto& [column, value] : row) bind(prepared, ++index, value);
  const int result = sqlite3_step(prepared);
  sqlite3_reset(prepared);
  check(result, handle_, std::string(table));
}

void DatabaseWriter::checkpoint() {
  if (journal_ == Journal::walWithPendingRows) execute("COMMIT; PRAGMA wal_checkpoint(TRUNCATE); BEGIN");
}

DatabaseFiles DatabaseWriter::finish() {
  execute("COMMIT");
  // Closing the last connection would fold the -wal file in, so it is read while this one is open.
  if (journal_ != Journal::walWithPendingRows) close();
  DatabaseFiles files{.main = readFile(folder_ / "database")};
  if (journal_ == Journal::walWithPendingRows) {
    files.wal = readFile(folder_ / "database-wal");
    files.shm = readFile(folder_ / "database-shm");
  }
  return files;
}

std::size_t settledCount(std::size_t count) { return count * 3 / 4; }

}  // namespace Fixture
