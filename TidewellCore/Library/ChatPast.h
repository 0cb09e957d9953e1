#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/SQLiteDB.h"

// What the library keeps of what a chat was called and who was in it.
// Throws what the database does.
namespace ChatPast {

// Keeps a title beside those that a chat had. Tells whether it is new.
bool takeTitle(const SQLiteDB& database, std::int64_t chat, std::string_view title);

// The members of a group, as a backup lists them.
struct Members {
  std::vector<std::string> jids;  // canonical
  double at = 0;                  // the date of the backup, in seconds since 1970
  bool isNewest = false;          // no newer backup told the chat
};
// `formerlyAt` is the date of the newest backup before. Those whom the newest lacks were members until then.
// Tells whether anything changed.
bool takeMembers(const SQLiteDB& database, std::int64_t chat, const Members& told, double formerlyAt);

// Gives the past of a chat to another, which it turned out to be.
void join(const SQLiteDB& database, std::int64_t chat, std::int64_t other);

}  // namespace ChatPast
