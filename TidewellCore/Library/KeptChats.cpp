#include "TidewellCore/Library/KeptChats.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "TidewellCore/FolderNames.h"

namespace {

auto rank(const KeptMessage& message) {
  constexpr double beforeAll = -std::numeric_limits<double>::infinity();
  const double sent = message.time.value_or(beforeAll);
  return std::tuple(std::floor(sent), message.placeInSecond, sent, message.key);
}

class Reader {
 public:
  explicit Reader(KeptMessages& messages) : messages_(messages) {}

  void operator()(const SQLiteRowView& row) {
    messages_.list.push_back({.key = row.integer(0).value_or(0),
                              .time = row.number(1),
                              .placeInSecond = row.integer(2).value_or(0),
                              .isFromMe = row.integer(3) == 1,
                              .lastTold = row.number(4),
                              .saidAt = row.number(5),
                              .isDeletedLater = row.integer(6) == 1,
                              .sender = row.integer(7),
                              .stanzaID = text(row, 8),
                              .text = text(row, 9),
                              .medium = row.integer(10),
                              .facts = text(row, 11)});
    if (const auto page = row.text(12)) messages_.list.back().page = messages_.texts.add(*page);
  }

 private:
  std::string_view text(const SQLiteRowView& row, int column) {
    const auto text = row.text(column);
    return text ? messages_.texts.add(*text) : std::string_view();
  }

  KeptMessages& messages_;
};

bool isPlainName(std::string_view name) {
  return !name.empty() && name.size() <= 255 &&
         std::ranges::none_of(name, [](char c) { return c == '/' || c == '\\' || (c >= 0 && c < ' ') || c == 0x7F; });
}

// Pages are named after it, so one that leads elsewhere is not to be trusted.
void requirePlain(std::string_view page) {
  if (!isPlainName(page))
    throw SQLiteDamage(TidewellError::InvalidDatabase{"A chat of the library has no page of its own."});
}

// "avatars/" and a name.
bool isPicture(std::string_view path) {
  const std::string folder = std::string(FolderNames::avatars) + "/";
  return path.starts_with(folder) && isPlainName(path.substr(folder.size()));
}

}  // namespace

std::vector<KeptChat> KeptChats::all(const SQLiteDB& database) {
  std::vector<KeptChat> chats;
  database.forEachRow("SELECT id, jid, name, page, partner, avatar, gone, told_at, told, changed FROM chat ORDER BY id",
                      [&](const SQLiteRowView& row) {
                        const auto text = [&](int column) { return std::string(row.text(column).value_or("")); };
                        chats.push_back({.id = row.integer(0).value_or(0),
                                         .jid = text(1),
                                         .name = text(2),
                                         .page = text(3),
                                         .partner = text(4),
                                         .isGone = row.integer(6) == 1,
                                         .toldAt = row.number(7).value_or(0),
                                         .changed = row.integer(9).value_or(0)});
                        requirePlain(chats.back().page);
                        if (isPicture(row.text(5).value_or(""))) chats.back().avatar = text(5);
                        if (const auto told = row.blob(8)) chats.back().told.assign(told->begin(), told->end());
                      });
  return chats;
}

double KeptChats::lastTold(const SQLiteDB& database, const KeptChat& chat) {
  double last = chat.toldAt;
  const SQLiteStatement find(database, "SELECT max(last_told) FROM message WHERE chat = ?");
  find.forEachRow({chat.id}, [&](const SQLiteRowView& row) { last = std::max(last, row.number(0).value_or(last)); });
  return last;
}

void KeptChats::forgetDigest(const SQLiteDB& database, std::int64_t chat) {
  SQLiteStatement(database, "UPDATE chat SET told = NULL WHERE id = ?").run({chat});
}

KeptMessages KeptChats::messages(const SQLiteDB& database, std::int64_t chat) {
  const SQLiteStatement select(
      database,
      "SELECT key, time, place, from_me, last_told, said_at, deleted_later, sender, stanza, text,"
      " medium, facts, page FROM message WHERE chat = ?");
  KeptMessages messages;
  select.forEachRow({chat}, Reader(messages));
  sort(messages.list);
  return messages;
}

void KeptChats::sort(std::vector<KeptMessage>& messages) {
  if (!std::ranges::is_sorted(messages, {}, rank)) std::ranges::sort(messages, {}, rank);
}
