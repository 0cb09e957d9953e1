#pragma once

#include <string>

#include "TidewellCore/Platform/Cancellation.h"

struct sqlite3;

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
