#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/TidewellError.h"

// A database in a folder of its own, and what is asked of it.
namespace Fixture {

// Writes straight through SQLite, so that the layer is not judged by itself.
inline void execute(const std::filesystem::path& file, const std::string& sql) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
  sqlite3_close(handle);
}

class SQLiteDBTest : public testing::Test {
 protected:
  SQLiteDB database(const std::string& sql) const {
    execute(file_, sql);
    return SQLiteDB(file_, SQLiteDB::OpenMode::readOnly);
  }
  SQLiteDB open(SQLiteDB::OpenMode mode) const { return SQLiteDB(file_, mode); }

  const Fixture::TemporaryDirectory folder_;
  const std::filesystem::path file_ = folder_ / "some.db";
};

inline std::vector<std::optional<std::string>> texts(const SQLiteDB& database, const std::string& sql,
                                                     const std::vector<SQLiteDB::Bind>& binds = {}) {
  std::vector<std::optional<std::string>> result;
  database.query(sql, binds, [&](const SQLiteRow& row) { result.push_back(row.textValue((*row.names)[0])); });
  return result;
}

// The first column of the first row.
inline SQLiteValue valueOf(const SQLiteDB& database, const std::string& sql,
                           const std::vector<SQLiteDB::Bind>& binds = {}) {
  SQLiteValue result = SQLiteNull{};
  database.query(sql, binds, [&](const SQLiteRow& row) { result = row.values[0]; });
  return result;
}

inline std::optional<TidewellError> errorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const TidewellError& error) {
    return error;
  }
  return std::nullopt;
}

}  // namespace Fixture
