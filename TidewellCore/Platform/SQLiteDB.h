#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/TidewellError.h"

struct SQLiteNull {
  bool operator==(const SQLiteNull&) const = default;
};

// One column's value. Text is valid UTF-8: invalid bytes became U+FFFD when it was read.
using SQLiteValue = std::variant<std::int64_t, double, std::string, Bytes, SQLiteNull>;

// The names of a statement's result columns, shared by all of its rows.
using SQLiteColumnNames = std::shared_ptr<const std::vector<std::string>>;

// One result row: a value under each column name.
struct SQLiteRow {
  SQLiteColumnNames names;
  std::vector<SQLiteValue> values;

  // The value under a name; of two columns with one name the later. Null when there is none.
  const SQLiteValue* value(std::string_view name) const;
  // An integer, or text that is a base-10 signed 64-bit integer and nothing else.
  std::optional<std::int64_t> intValue(std::string_view name) const;
  // Text; an integer in decimal; a real as the shortest text that reads back the
  // same, always with a fraction ("3.0").
  std::optional<std::string> textValue(std::string_view name) const;
};

// One result row where SQLite keeps it, for tables that are long: nothing is
// copied, and what it gives is good until its handler returns. Columns count
// from 0; one below 0 is not there, and NULL.
class SQLiteRowView {
 public:
  enum class Type { integer, real, text, blob, null };

  Type type(int column) const;
  // An integer, or text that is a base-10 signed 64-bit integer and nothing else.
  std::optional<std::int64_t> integer(int column) const;
  // An integer, a real, or text that is a decimal number and nothing else.
  std::optional<double> number(int column) const;
  // Text, valid as in SQLiteValue; a number as SQLiteRow::textValue writes it.
  std::optional<std::string_view> text(int column) const;
  // Absent for anything but a blob.
  std::optional<ByteView> blob(int column) const;

 private:
  friend class SQLiteDB;
  friend class SQLiteStatement;
  // `statement` is an sqlite3_stmt that stands on a row.
  explicit SQLiteRowView(void* statement) : statement_(statement) {}

  // Keeps a text that SQLite does not have in that form.
  std::string_view kept(int column, std::string text) const;

  void* statement_;
  mutable std::deque<std::string> made_;  // by column; a deque leaves in place what it holds
};

// TidewellError::invalidDatabase of a file whose bytes are damaged, or that is no database.
class SQLiteDamage : public TidewellError {
  using TidewellError::TidewellError;
};

struct SQLiteConnection;

// One connection to an SQLite file, for one thread at a time. Its own statements are
// prepared, stepped to their end and finalised within one call. Files that are
// not ours are distrusted: no views, triggers, virtual tables or extensions, no
// value of more than 64 MB, no link in the file's place, and no file that a journal names.
class SQLiteDB {
 public:
  enum class OpenMode {
    readOnly,      // never writes to the file
    writableCopy,  // for working copies: folds a -wal in, rolls a -journal back, ends WAL mode, then refuses writes
    create,        // makes the file when it is missing; ours, so it is trusted
    // A lasting file of ours that somebody may have changed: made when it is missing, distrusted, written in
    // transactions that a power cut leaves whole or undone. Whoever opens it has seen to it that nobody else
    // does: no locks are asked of the drive.
    kept,
    keptReadOnly,  // such a file as it stands: nothing is rolled back, so one with a journal to roll back is refused
  };

  using Bind = std::variant<std::string, std::int64_t, Bytes>;
  using RowHandler = std::function<void(const SQLiteRow&)>;
  using RowViewHandler = std::function<void(const SQLiteRowView&)>;

  // Throws TidewellError::databaseOpenFailed with `stage`, or with the mode's own stage text; of a file that is kept,
  // what the file system says.
  SQLiteDB(const std::string& path, OpenMode mode, const std::optional<std::string>& stage = std::nullopt);
  ~SQLiteDB();
  SQLiteDB(SQLiteDB&&) noexcept;
  SQLiteDB& operator=(SQLiteDB&&) noexcept;

  // From now on every statement asks `isCancelled` now and then, on its own thread, and
  // throws TidewellError::cancelled when it says so. Once at most for each connection.
  void cancelWhen(CancellationCheck isCancelled);

  // Calls `row` for each result row in the statement's order; the row is good
  // until the handler returns. Parameters are bound in order from the first.
  // Throws TidewellError::invalidDatabase, SQLiteDamage among them, rows already handed over or not;
  // and, of a file that is kept, what the file system says.
  void query(const std::string& sql, const std::vector<Bind>& binds, const RowHandler& row) const;
  // The same without a copy of the values.
  void forEachRow(const std::string& sql, const RowViewHandler& row) const;

  // What a schema holds under a name, triggers aside. Anything that could stand in
  // for a table (a view, a virtual table) or for its name (an index) is `other`.
  enum class Kind { none, table, other };

  // All three throw TidewellError::invalidDatabase for a name that is no plain identifier.
  Kind kindOf(const std::string& name) const;
  // Whether it is a table with rows of its own.
  bool tableExists(const std::string& name) const;
  // Upper-cased; empty when there is no such table.
  std::set<std::string> columns(const std::string& table) const;

 private:
  friend class SQLiteStatement;
  friend class SQLiteTransaction;
  std::unique_ptr<SQLiteConnection> connection_;
};

// A statement that is run many times, each time with other values. Must not
// outlive its database. Failures as of SQLiteDB::query.
class SQLiteStatement {
 public:
  // What it does not own need only last until the call returns.
  using Value = std::variant<SQLiteNull, std::int64_t, double, std::string_view, ByteView>;

  SQLiteStatement(const SQLiteDB& database, const std::string& sql);
  ~SQLiteStatement();
  SQLiteStatement(SQLiteStatement&&) noexcept;
  SQLiteStatement& operator=(SQLiteStatement&&) = delete;

  // Binds the values in order from the first, and steps to the end.
  void run(std::initializer_list<Value> values) const;
  // The same, calling `row` for each result row as SQLiteDB::forEachRow does.
  void forEachRow(std::initializer_list<Value> values, const SQLiteDB::RowViewHandler& row) const;

 private:
  const SQLiteConnection* connection_;
  void* statement_;  // an sqlite3_stmt
};

// What is written while it lives takes effect together, with `commit`, or not at all.
class SQLiteTransaction {
 public:
  // `database` must outlive it.
  explicit SQLiteTransaction(const SQLiteDB& database);
  ~SQLiteTransaction();
  SQLiteTransaction(const SQLiteTransaction&) = delete;
  SQLiteTransaction& operator=(const SQLiteTransaction&) = delete;

  // Throws TidewellError::invalidDatabase; what was written is undone then.
  void commit();

 private:
  const SQLiteDB& database_;
  bool isOpen_ = true;
};
