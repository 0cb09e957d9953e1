#include "TidewellCore/Library/ChatPast.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace {

using Value = SQLiteStatement::Value;
using LastTold = std::optional<double>;  // as the column `last_told`
using KeptMembers = std::map<std::string, LastTold, std::less<>>;

KeptMembers membersOf(const SQLiteDB& database, std::int64_t chat) {
  KeptMembers members;
  const SQLiteStatement select(database, "SELECT jid, last_told FROM member WHERE chat = ?");
  select.forEachRow(
      {chat}, [&](const SQLiteRowView& row) { members.emplace(std::string(row.text(0).value_or("")), row.number(1)); });
  return members;
}

}  // namespace

bool ChatPast::takeTitle(const SQLiteDB& database, std::int64_t chat, std::string_view title) {
  bool isKnown = title.empty();
  const SQLiteStatement find(database, "SELECT 1 FROM title WHERE chat = ? AND name = ?");
  find.forEachRow({chat, title}, [&](const SQLiteRowView&) { isKnown = true; });
  if (!isKnown) SQLiteStatement(database, "INSERT INTO title (chat, name) VALUES (?, ?)").run({chat, title});
  return !isKnown;
}

bool ChatPast::takeMembers(const SQLiteDB& database, std::int64_t chat, const Members& told, double formerlyAt) {
  const KeptMembers before = membersOf(database, chat);
  KeptMembers now = before;
  for (const std::string& jid : told.jids) {
    const auto [member, isNew] = now.try_emplace(jid, told.at);
    if (member->second) member->second = std::max(*member->second, told.at);
    if (told.isNewest) member->second.reset();
  }
  for (auto& [jid, lastTold] : now) {
    const bool isListed = std::ranges::find(told.jids, jid) != told.jids.end();
    if (told.isNewest && !isListed && !lastTold) lastTold = formerlyAt;
  }
  const SQLiteStatement write(database, "INSERT OR REPLACE INTO member (chat, jid, last_told) VALUES (?, ?, ?)");
  for (const auto& [jid, lastTold] : now) {
    const auto known = before.find(jid);
    if (known != before.end() && known->second == lastTold) continue;
    write.run({chat, std::string_view(jid), lastTold ? Value(*lastTold) : Value(SQLiteNull{})});
  }
  return now != before;
}

// Of a member of both, what the other chat says counts.
void ChatPast::join(const SQLiteDB& database, std::int64_t chat, std::int64_t other) {
  for (const char* table : {"title", "member"}) {
    SQLiteStatement(database, std::string("UPDATE OR IGNORE ") + table + " SET chat = ? WHERE chat = ?")
        .run({other, chat});
    SQLiteStatement(database, std::string("DELETE FROM ") + table + " WHERE chat = ?").run({chat});
  }
}
