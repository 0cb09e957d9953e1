#pragma once

#include <string>

#include "TidewellCore/Platform/Cancellation.h"

struct sqlite3;
struct sqlite3_mutex;

// What an SQLiteDB has open, for those that run statements on it. Nobody else includes this.
struct SQLiteConnection {
  sqlite3* handle = nullptr;
  std::string path;  // of a file that is kept; empty for any other
  CancellationCheck isCancelled;

  SQLiteConnection() = default;
  SQLiteConnection(const SQLiteConnection&) = delete;
  SQLiteConnection& operator=(const SQLiteConnection&) = delete;
  ~SQLiteConnection();

  // Throws what the last call came of: for a file that is kept, what the file system said.
  [[noreturn]] void fail() const;
};

// SQLite's own lock of a connection, held while rows are looked at: the values of a row may be read as they are only
// under it, and each call that takes it again finds it taken.
class SQLiteLock {
 public:
  explicit SQLiteLock(const SQLiteConnection& connection);
  ~SQLiteLock();
  SQLiteLock(const SQLiteLock&) = delete;
  SQLiteLock& operator=(const SQLiteLock&) = delete;

 private:
  sqlite3_mutex* mutex_;  // null for a connection that has none
};
