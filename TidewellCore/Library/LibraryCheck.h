#pragma once

#include <cstdint>

#include "TidewellCore/Platform/SQLiteDB.h"

// Whether a library says what only this program could have written. Any tool can change the file, and
// what reads it adds to its numbers and follows them.
namespace LibraryCheck {

// Past every number that is given out one after another, and far from where sums overflow.
inline constexpr std::int64_t largestNumber = std::int64_t{1} << 40;

// Throws SQLiteDamage for one that contradicts itself: numbers that nobody gave, a chat that is not found by
// its own JID, identities and messages of no chat. `database` has the library's tables.
void requireConsistent(const SQLiteDB& database);

// Throws SQLiteDamage where a chat's pages were made of more messages than there are: none is ever taken out, and
// pages that are made again would lose them.
void requireMessagesOfPages(const SQLiteDB& database);

}  // namespace LibraryCheck
