#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

// What the index of a write-ahead log, the -shm file, says of its log (the
// WAL-mode file format, section 2.1). SQLite makes the index anew and never
// reads one that was copied; it is a witness of where the log ended.
struct SQLiteWALIndex {
  std::array<std::uint8_t, 8> salts{};  // of the log's generation, as they stand in its header
  std::int64_t frameCount = 0;          // frames up to the last commit
  std::int64_t backfilledCount = 0;     // of these, the first that the database holds as well (section 2.2)

  // Whether the log holds what its database does not.
  bool hasPendingFrames() const { return backfilledCount < frameCount; }

  // Absent unless both copies of its header are whole and equal, and of a
  // little-endian machine, as iPhones are; when it cannot be read, too.
  static std::optional<SQLiteWALIndex> read(const std::filesystem::path& file);

  bool operator==(const SQLiteWALIndex&) const = default;
};
