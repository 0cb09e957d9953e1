#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

#include "TidewellCore/Platform/Bytes.h"

// What the first 100 bytes of a database say (the SQLite file format, section 1.3).
struct SQLiteHeader {
  bool isWAL = false;             // SQLite looks for a write-ahead log
  std::int64_t databaseSize = 0;  // in bytes: page size × page count

  // Absent when the file cannot be read or is no database.
  static std::optional<SQLiteHeader> read(const std::filesystem::path& file);

  // What every database begins with.
  static constexpr std::string_view magic{"SQLite format 3\0", 16};
  // In bytes; every page size is a power of two.
  static constexpr std::int64_t smallestPage = 512;
  // The write version: 1 for a rollback journal, 2 for a write-ahead log.
  static constexpr std::size_t writeVersionOffset = 18;
  // The read version, of the same values, is what SQLite goes by.
  static constexpr std::size_t readVersionOffset = 19;
  // What SQLite keeps beside a database while it is in use.
  static constexpr std::array<const char*, 3> companionEndings{"-wal", "-shm", "-journal"};
};
