#include <sqlite3.h>

#include <utility>

#include "TidewellCore/Platform/SQLiteConnection.h"
#include "TidewellCore/Platform/SQLiteDB.h"

namespace {

sqlite3_stmt* statementOf(void* statement) { return static_cast<sqlite3_stmt*>(statement); }

// Binds a value that lasts until the statement has been run.
struct Binder {
  sqlite3_stmt* statement;
  int index;

  int operator()(const SQLiteNull&) const { return sqlite3_bind_null(statement, index); }
  int operator()(std::int64_t number) const { return sqlite3_bind_int64(statement, index, number); }
  int operator()(double number) const { return sqlite3_bind_double(statement, index, number); }
  int operator()(std::string_view text) const {
    return sqlite3_bind_text64(statement, index, text.empty() ? "" : text.data(), text.size(), SQLITE_STATIC,
                               SQLITE_UTF8);
  }
  int operator()(ByteView blob) const {
    return sqlite3_bind_blob64(statement, index, blob.empty() ? reinterpret_cast<const std::uint8_t*>("") : blob.data(),
                               blob.size(), SQLITE_STATIC);
  }
};

// Makes a statement ready for its next run, and forgets the values of this one.
struct Rewinder {
  sqlite3_stmt* statement;
  ~Rewinder() {
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
  }
};

}  // namespace

SQLiteStatement::SQLiteStatement(const SQLiteDB& database, const std::string& sql)
    : connection_(database.connection_.get()), statement_(nullptr) {
  sqlite3_stmt* statement = nullptr;
  const int result =
      sqlite3_prepare_v3(connection_->handle, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  if (result != SQLITE_OK || statement == nullptr) connection_->fail();
  statement_ = statement;
}

SQLiteStatement::~SQLiteStatement() { sqlite3_finalize(statementOf(statement_)); }

SQLiteStatement::SQLiteStatement(SQLiteStatement&& other) noexcept
    : connection_(other.connection_), statement_(std::exchange(other.statement_, nullptr)) {}

void SQLiteStatement::run(std::initializer_list<Value> values) const {
  forEachRow(values, [](const SQLiteRowView&) {});
}

void SQLiteStatement::forEachRow(std::initializer_list<Value> values, const SQLiteDB::RowViewHandler& row) const {
  sqlite3_stmt* statement = statementOf(statement_);
  const Rewinder rewinder{statement};
  int index = 0;
  for (const Value& value : values) {
    if (std::visit(Binder{statement, ++index}, value) != SQLITE_OK) connection_->fail();
  }
  const SQLiteLock lock(*connection_);
  const SQLiteRowView current(statement);
  int result = sqlite3_step(statement);
  for (; result == SQLITE_ROW; result = sqlite3_step(statement)) row(current);
  if (result != SQLITE_DONE) connection_->fail();
}

SQLiteTransaction::SQLiteTransaction(const SQLiteDB& database) : database_(database) {
  database_.query("BEGIN IMMEDIATE", {}, [](const SQLiteRow&) {});
}

SQLiteTransaction::~SQLiteTransaction() {
  if (isOpen_) sqlite3_exec(database_.connection_->handle, "ROLLBACK", nullptr, nullptr, nullptr);
}

void SQLiteTransaction::commit() {
  database_.query("COMMIT", {}, [](const SQLiteRow&) {});
  isOpen_ = false;
}
