#include "TidewellCore/Platform/SQLiteConnection.h"

#include <sqlite3.h>

#include <cerrno>
#include <filesystem>

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SQLiteDB.h"

namespace {

std::error_code reason(sqlite3* handle, int code) {
  const int said = sqlite3_system_errno(handle);
  const int otherwise = code == SQLITE_FULL ? ENOSPC : code == SQLITE_READONLY ? EROFS : EIO;
  return {code == SQLITE_FULL || said == 0 ? otherwise : said, std::generic_category()};
}

}  // namespace

SQLiteConnection::~SQLiteConnection() { sqlite3_close(handle); }

void SQLiteConnection::fail() const {
  const int code = sqlite3_errcode(handle);
  const std::string message = sqlite3_errmsg(handle);
  if (code == SQLITE_INTERRUPT) throw TidewellError::cancelled();
  if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) throw SQLiteDamage(TidewellError::InvalidDatabase{message});
  const bool isOfFile =
      code == SQLITE_FULL || code == SQLITE_IOERR || code == SQLITE_CANTOPEN || code == SQLITE_READONLY;
  if (!path.empty() && isOfFile) {
    throw std::filesystem::filesystem_error(message, PathText::path(path), reason(handle, code));
  }
  throw TidewellError::invalidDatabase(message);
}

SQLiteLock::SQLiteLock(const SQLiteConnection& connection) : mutex_(sqlite3_db_mutex(connection.handle)) {
  sqlite3_mutex_enter(mutex_);
}

SQLiteLock::~SQLiteLock() { sqlite3_mutex_leave(mutex_); }
