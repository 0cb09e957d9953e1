#include "TidewellCore/Library/LibraryCheck.h"

#include <fmt/format.h>

#include <array>
#include <string>

namespace {

// Each finds a row where something is wrong; {0} is the largest number that is given.
constexpr std::array contradictions{
    "SELECT 1 FROM export WHERE id NOT BETWEEN 1 AND {0}",
    "SELECT 1 FROM chat WHERE id NOT BETWEEN 1 AND {0} OR typeof(changed) <> 'integer' OR changed NOT BETWEEN 0 AND "
    "{0}",
    "SELECT 1 FROM chat WHERE NOT EXISTS"
    " (SELECT 1 FROM chat_jid WHERE chat_jid.jid = chat.jid AND chat_jid.chat = chat.id)",
    "SELECT 1 FROM chat_jid WHERE chat NOT IN (SELECT id FROM chat)",
    // Goes from chat to chat in the order of the table, which need not be read whole.
    "WITH RECURSIVE told (chat) AS (SELECT min(chat) FROM message UNION ALL"
    " SELECT (SELECT min(chat) FROM message WHERE chat > told.chat) FROM told WHERE told.chat IS NOT NULL)"
    " SELECT 1 FROM told WHERE chat IS NOT NULL AND chat NOT IN (SELECT id FROM chat)",
    "SELECT 1 FROM medium WHERE size IS NOT NULL AND (typeof(size) <> 'integer' OR size < 0)",
};

// {0} as before: a count that cannot be right is of no rendering.
constexpr const char* lostMessages =
    "SELECT 1 FROM rendering JOIN chat ON chat.id = rendering.chat WHERE rendering.messages BETWEEN 1 AND {0}"
    " AND rendering.messages > (SELECT count(*) FROM message WHERE message.chat = rendering.chat)";

void requireNone(const SQLiteDB& database, const char* contradiction) {
  const std::string sql = fmt::format(fmt::runtime(contradiction), LibraryCheck::largestNumber) + " LIMIT 1";
  database.forEachRow(sql, [](const SQLiteRowView&) {
    throw SQLiteDamage(TidewellError::InvalidDatabase{"The library contradicts itself."});
  });
}

}  // namespace

void LibraryCheck::requireConsistent(const SQLiteDB& database) {
  for (const char* contradiction : contradictions) requireNone(database, contradiction);
}

void LibraryCheck::requireMessagesOfPages(const SQLiteDB& database) { requireNone(database, lostMessages); }
