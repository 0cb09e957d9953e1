#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "TidewellCore/Platform/SQLiteWALIndex.h"

// How whole a write-ahead log is (the SQLite file format, section 4). SQLite
// takes the frames before the first that does not fit and is silent about the
// rest, so the log is looked at before SQLite opens its database.
struct SQLiteWAL {
  enum class State {
    empty,          // absent, or without a byte
    sound,          // what follows its last whole frame is of an earlier generation, if anything does
    torn,           // ends in a transaction that was never finished: nothing is lost
    damagedHeader,  // SQLite takes nothing of it
    damagedFrame,   // a frame is not whole, and SQLite passes over what was committed with it or after it
    cut,            // shorter than it was when it was recorded
  };

  State state = State::empty;
  std::int64_t frameCount = 0;  // whole frames up to the last commit: those that SQLite takes

  // Whether rows that were committed may be lost with it.
  bool isDamaged() const;

  // One pass over the file, in bounded memory. `recordedSize` is its length in
  // bytes as somebody else noted it; an `index` of the same generation knows which
  // frame was committed last. Throws std::filesystem::filesystem_error when
  // something is there but cannot be read.
  static SQLiteWAL read(const std::filesystem::path& file, std::optional<std::int64_t> recordedSize = std::nullopt,
                        const std::optional<SQLiteWALIndex>& index = std::nullopt);

  // Whether the frames that SQLite takes of `file`, which was read, hold each page
  // of the database that its first `storedSize` bytes lack: an app that is caught
  // while it moves pages from the log into the database leaves it so.
  bool completes(const std::filesystem::path& file, std::int64_t storedSize) const;

  bool operator==(const SQLiteWAL&) const = default;
};
