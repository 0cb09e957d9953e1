#include "TidewellCore/Platform/SQLiteDB.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <utility>

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteConnection.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/TidewellError.h"

namespace {

struct Mode {
  int flags;
  const char* stage;
  std::vector<const char*> pragmas;
  bool isTrusted = false;
  const char* fileSystem = nullptr;  // SQLite's own name of how it goes to files; null for the usual way
};

Mode modeOf(SQLiteDB::OpenMode mode) {
  constexpr int notOurs = SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_NOFOLLOW;
  // What SQLite sorts on its way is somebody's, and stays out of files.
  constexpr const char* watchful = "PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0; PRAGMA temp_store = MEMORY;";
  constexpr const char* refuseWrites = "PRAGMA query_only = ON;";
  switch (mode) {
    case SQLiteDB::OpenMode::readOnly:
      return {SQLITE_OPEN_READONLY | notOurs, "open Manifest.db read-only", {watchful, refuseWrites}};
    case SQLiteDB::OpenMode::writableCopy:
      return {SQLITE_OPEN_READWRITE | notOurs,
              "open writable SQLite copy",
              {watchful, "PRAGMA journal_mode = DELETE;", refuseWrites}};
    case SQLiteDB::OpenMode::kept:
      return {SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW,
              "open the archive's library",
              {watchful, "PRAGMA journal_mode = DELETE;", "PRAGMA synchronous = FULL;"},
              false,
              "unix-none"};
    case SQLiteDB::OpenMode::keptReadOnly:
      return {SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW,
              "look at the archive's library",
              {watchful, refuseWrites},
              false,
              "unix-none"};
    case SQLiteDB::OpenMode::create:
      break;
  }
  return {SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, "create SQLite file", {}, true};
}

// Some builds of SQLite take a name that begins with "file:" for a URI.
std::string plainPath(const std::string& path) { return path.starts_with("file:") ? "./" + path : path; }

// SQLite is to refuse a link in the file's place, and then refuses them on the
// whole way there; those above the file's folder are the user's own.
std::string withoutLinksAbove(const std::string& path) {
  const std::filesystem::path file = PathText::path(plainPath(path));
  std::error_code error;
  const auto folder = std::filesystem::canonical(file.has_parent_path() ? file.parent_path() : ".", error);
  return error ? plainPath(path) : PathText::text(folder / file.filename());
}

// The end of a rollback journal may name a super-journal, a file of any path, which SQLite
// removes after the roll-back unless that names the journal in turn (pager.c: readSuperJournal,
// pager_delsuper). It is looked for in the very last bytes alone, where one byte
// more hides it, and what is to be rolled back does not reach so far. No phone writes one:
// it is for transactions over several databases.
void hideSuperJournal(const std::string& path) {
  const std::string journal = path + "-journal";
  const int file = ::open(journal.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0 && errno == ENOENT) return;
  const char last = 0;
  const bool isHidden = file >= 0 && ::write(file, &last, sizeof last) == sizeof last;
  if (file >= 0) ::close(file);
  if (!isHidden) throw TidewellError::invalidDatabase("The journal of a working copy cannot be written.");
}

// What SQLite's makers advise for files of strangers. Without modules there are
// no virtual tables. The limits are far above what a phone writes.
void distrust(sqlite3* handle) {
  constexpr std::array<std::pair<int, int>, 6> switches{{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                                         {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
                                                         {SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0}}};
  constexpr std::array<std::pair<int, int>, 8> limits{{{SQLITE_LIMIT_LENGTH, 64 << 20},
                                                       {SQLITE_LIMIT_SQL_LENGTH, 1'000'000},
                                                       {SQLITE_LIMIT_COLUMN, 1000},
                                                       {SQLITE_LIMIT_EXPR_DEPTH, 100},
                                                       {SQLITE_LIMIT_COMPOUND_SELECT, 5},
                                                       {SQLITE_LIMIT_VDBE_OP, 250'000},
                                                       {SQLITE_LIMIT_ATTACHED, 0},
                                                       {SQLITE_LIMIT_TRIGGER_DEPTH, 1}}};
  for (const auto& [name, value] : switches) sqlite3_db_config(handle, name, value, nullptr);
  for (const auto& [name, value] : limits) sqlite3_limit(handle, name, value);
  sqlite3_drop_modules(handle, nullptr);
}

std::string_view storedText(sqlite3_stmt* statement, int column) {
  const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  if (data == nullptr) throw std::bad_alloc();
  return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

class Statement {
 public:
  Statement(const SQLiteConnection& connection, const std::string& sql) : connection_(connection) {
    const int result = sqlite3_prepare_v2(connection.handle, sql.c_str(), -1, &statement_, nullptr);
    if (result != SQLITE_OK || statement_ == nullptr) connection.fail();
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  void bind(int index, const std::string& text) {
    check(sqlite3_bind_text(statement_, index, text.c_str(), -1, SQLITE_TRANSIENT));
  }
  void bind(int index, std::int64_t number) { check(sqlite3_bind_int64(statement_, index, number)); }
  void bind(int index, const Bytes& blob) {
    // A null pointer would bind NULL; an empty blob is one that points somewhere.
    const void* data = blob.empty() ? static_cast<const void*>("") : blob.data();
    check(sqlite3_bind_blob(statement_, index, data, static_cast<int>(blob.size()), SQLITE_TRANSIENT));
  }

  // False after the last row.
  bool step() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) connection_.fail();
    return result == SQLITE_ROW;
  }

  sqlite3_stmt* get() const { return statement_; }

  SQLiteColumnNames columnNames() const {
    std::vector<std::string> names(static_cast<std::size_t>(sqlite3_column_count(statement_)));
    for (std::size_t i = 0; i < names.size(); ++i) names[i] = sqlite3_column_name(statement_, static_cast<int>(i));
    return std::make_shared<const std::vector<std::string>>(std::move(names));
  }

  // Overwrites the values of the row before, and reuses their memory.
  void readRow(std::vector<SQLiteValue>& values) const {
    for (std::size_t i = 0; i < values.size(); ++i) readColumn(static_cast<int>(i), values[i]);
  }

 private:
  void check(int result) const {
    if (result != SQLITE_OK) connection_.fail();
  }

  void readColumn(int column, SQLiteValue& value) const {
    switch (sqlite3_column_type(statement_, column)) {
      case SQLITE_INTEGER:
        value = static_cast<std::int64_t>(sqlite3_column_int64(statement_, column));
        break;
      case SQLITE_FLOAT:
        value = sqlite3_column_double(statement_, column);
        break;
      case SQLITE_TEXT:
        readText(column, value);
        break;
      case SQLITE_BLOB:
        readBlob(column, value);
        break;
      default:
        value = SQLiteNull{};
    }
  }

  void readText(int column, SQLiteValue& value) const {
    const std::string_view text = storedText(statement_, column);
    if (!Text::isValid(text)) {
      value = Text::repaired(text);
    } else if (auto* kept = std::get_if<std::string>(&value)) {
      kept->assign(text);
    } else {
      value.emplace<std::string>(text);
    }
  }

  void readBlob(int column, SQLiteValue& value) const {
    const auto* data = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    value = data == nullptr ? Bytes() : Bytes(data, data + size);
  }

  const SQLiteConnection& connection_;
  sqlite3_stmt* statement_ = nullptr;
};

std::optional<std::int64_t> integerOf(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<double> realOf(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

sqlite3_stmt* statementOf(void* statement) { return static_cast<sqlite3_stmt*>(statement); }

// Of a row that is looked at under the connection's lock.
sqlite3_value* valueAt(void* statement, int column) { return sqlite3_column_value(statementOf(statement), column); }

SQLiteRowView::Type typeOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return SQLiteRowView::Type::integer;
    case SQLITE_FLOAT:
      return SQLiteRowView::Type::real;
    case SQLITE_TEXT:
      return SQLiteRowView::Type::text;
    case SQLITE_BLOB:
      return SQLiteRowView::Type::blob;
    default:
      return SQLiteRowView::Type::null;
  }
}

std::string_view storedText(sqlite3_value* value) {
  const auto* data = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (data == nullptr) throw std::bad_alloc();
  return {data, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// {fmt} writes the shortest digits that read back the same; "1e+30" and "3" gain their fraction.
std::string textOfReal(double number) {
  std::string text = fmt::format("{}", number);
  if (text.find_first_of(".n") == std::string::npos) text.insert(std::min(text.find('e'), text.size()), ".0");
  return text;
}

std::optional<std::string> textOfValue(const SQLiteValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<std::int64_t>(&value)) return fmt::format("{}", *number);
  if (const auto* real = std::get_if<double>(&value)) return textOfReal(*real);
  return std::nullopt;
}

// Identifiers cannot be bound as parameters, so only plain ones are let into a statement.
void requirePlainIdentifier(const std::string& name) {
  const std::u32string scalars = Text::scalars(name);
  const bool isPlain = !scalars.empty() && std::ranges::all_of(scalars, [](char32_t scalar) {
    return scalar == U'_' || Text::isAlphanumeric(scalar);
  });
  if (!isPlain) throw TidewellError::invalidDatabase("Unsafe identifier: " + name);
}

}  // namespace

const SQLiteValue* SQLiteRow::value(std::string_view name) const {
  for (std::size_t i = values.size(); i-- > 0;) {
    if ((*names)[i] == name) return &values[i];
  }
  return nullptr;
}

std::optional<std::int64_t> SQLiteRow::intValue(std::string_view name) const {
  const SQLiteValue* found = value(name);
  if (found == nullptr) return std::nullopt;
  if (const auto* number = std::get_if<std::int64_t>(found)) return *number;
  if (const auto* text = std::get_if<std::string>(found)) return integerOf(*text);
  return std::nullopt;
}

std::optional<std::string> SQLiteRow::textValue(std::string_view name) const {
  const SQLiteValue* found = value(name);
  return found == nullptr ? std::nullopt : textOfValue(*found);
}

SQLiteRowView::Type SQLiteRowView::type(int column) const {
  return column < 0 ? Type::null : typeOf(valueAt(statement_, column));
}

std::optional<std::int64_t> SQLiteRowView::integer(int column) const {
  if (column < 0) return std::nullopt;
  sqlite3_value* value = valueAt(statement_, column);
  const Type stored = typeOf(value);
  if (stored == Type::integer) return sqlite3_value_int64(value);
  if (stored == Type::text) return integerOf(storedText(value));
  return std::nullopt;
}

std::optional<double> SQLiteRowView::number(int column) const {
  if (column < 0) return std::nullopt;
  sqlite3_value* value = valueAt(statement_, column);
  const Type stored = typeOf(value);
  if (stored == Type::integer) return static_cast<double>(sqlite3_value_int64(value));
  if (stored == Type::real) return sqlite3_value_double(value);
  if (stored == Type::text) return realOf(storedText(value));
  return std::nullopt;
}

std::optional<std::string_view> SQLiteRowView::text(int column) const {
  if (column < 0) return std::nullopt;
  sqlite3_value* value = valueAt(statement_, column);
  switch (typeOf(value)) {
    case Type::integer:
      return kept(column, fmt::format("{}", sqlite3_value_int64(value)));
    case Type::real:
      return kept(column, textOfReal(sqlite3_value_double(value)));
    case Type::text: {
      const std::string_view stored = storedText(value);
      return Text::isValid(stored) ? stored : kept(column, Text::repaired(stored));
    }
    case Type::blob:
    case Type::null:
      break;
  }
  return std::nullopt;
}

std::optional<ByteView> SQLiteRowView::blob(int column) const {
  if (column < 0) return std::nullopt;
  sqlite3_value* value = valueAt(statement_, column);
  if (typeOf(value) != Type::blob) return std::nullopt;
  const auto* data = static_cast<const std::uint8_t*>(sqlite3_value_blob(value));
  const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
  return data == nullptr ? ByteView() : ByteView(data, size);
}

std::string_view SQLiteRowView::kept(int column, std::string text) const {
  const auto place = static_cast<std::size_t>(column);
  if (made_.size() <= place) made_.resize(place + 1);
  return made_[place] = std::move(text);
}

SQLiteDB::SQLiteDB(const std::string& path, OpenMode openMode, const std::optional<std::string>& stage)
    : connection_(std::make_unique<SQLiteConnection>()) {
  const Mode mode = modeOf(openMode);
  sqlite3*& handle = connection_->handle;
  if (openMode == OpenMode::writableCopy || openMode == OpenMode::kept) hideSuperJournal(path);
  const int result = sqlite3_open_v2(withoutLinksAbove(path).c_str(), &handle, mode.flags, mode.fileSystem);
  if (openMode == OpenMode::kept || openMode == OpenMode::keptReadOnly) connection_->path = path;
  if (result != SQLITE_OK) {
    if (!connection_->path.empty()) connection_->fail();
    const std::string message =
        handle != nullptr ? sqlite3_errmsg(handle) : fmt::format("SQLite open failed ({})", result);
    throw TidewellError::databaseOpenFailed(stage.value_or(mode.stage), path, message);
  }
  if (!mode.isTrusted) distrust(handle);
  for (const char* pragma : mode.pragmas) sqlite3_exec(handle, pragma, nullptr, nullptr, nullptr);
}

SQLiteDB::~SQLiteDB() = default;
SQLiteDB::SQLiteDB(SQLiteDB&&) noexcept = default;
SQLiteDB& SQLiteDB::operator=(SQLiteDB&&) noexcept = default;

void SQLiteDB::cancelWhen(CancellationCheck isCancelled) {
  constexpr int instructions = 10'000;  // of SQLite's machine, well below a hundredth of a second
  if (!connection_ || !isCancelled) return;
  connection_->isCancelled = std::move(isCancelled);
  const auto ask = [](void* check) { return (*static_cast<CancellationCheck*>(check))() ? 1 : 0; };
  sqlite3_progress_handler(connection_->handle, instructions, ask, &connection_->isCancelled);
}

void SQLiteDB::query(const std::string& sql, const std::vector<Bind>& binds, const RowHandler& row) const {
  if (!connection_) throw TidewellError::invalidDatabase("SQLite error");
  Statement statement(*connection_, sql);
  int index = 0;
  for (const Bind& value : binds) {
    ++index;
    std::visit([&](const auto& parameter) { statement.bind(index, parameter); }, value);
  }
  SQLiteRow current{.names = statement.columnNames()};
  current.values.resize(current.names->size(), SQLiteNull{});
  while (statement.step()) {
    statement.readRow(current.values);
    row(current);
  }
}

void SQLiteDB::forEachRow(const std::string& sql, const RowViewHandler& row) const {
  if (!connection_) throw TidewellError::invalidDatabase("SQLite error");
  Statement statement(*connection_, sql);
  const SQLiteLock lock(*connection_);
  const SQLiteRowView current(statement.get());
  while (statement.step()) row(current);
}

SQLiteDB::Kind SQLiteDB::kindOf(const std::string& name) const {
  requirePlainIdentifier(name);
  Kind kind = Kind::none;
  query("SELECT type, rootpage, sql FROM sqlite_master WHERE type <> 'trigger' AND name = ?", {name},
        [&](const SQLiteRow& row) {
          const bool isTable = row.textValue("type") == "table" && row.intValue("rootpage").value_or(0) > 0 &&
                               row.textValue("sql").value_or("").starts_with("CREATE TABLE");
          kind = isTable && kind != Kind::other ? Kind::table : Kind::other;
        });
  return kind;
}

bool SQLiteDB::tableExists(const std::string& name) const { return kindOf(name) == Kind::table; }

std::set<std::string> SQLiteDB::columns(const std::string& table) const {
  requirePlainIdentifier(table);
  std::set<std::string> names;
  query("PRAGMA table_info(" + table + ")", {}, [&](const SQLiteRow& row) {
    if (const auto name = row.textValue("name")) names.insert(Text::uppercasedASCII(*name));
  });
  return names;
}
