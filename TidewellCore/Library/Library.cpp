#include "TidewellCore/Library/Library.h"

#include <algorithm>
#include <set>

#include "TidewellCore/Library/LibraryCheck.h"

namespace {

constexpr const char* wasSetAside =
    "This export’s library was damaged and has been set aside. It was made anew from the archive’s pages and this "
    "backup; what only the library knew may be missing.";

Library soundLibrary(const std::filesystem::path& contentRoot) {
  try {
    LibraryFile file = LibraryFile::open(contentRoot);
    LibraryCheck::requireMessagesOfPages(file.database());
    return Library(std::move(file));
  } catch (const SQLiteDamage&) {
    LibraryFile::setAside(contentRoot);
  }
  return Library(LibraryFile::open(contentRoot));
}

}  // namespace

Library Library::open(const std::filesystem::path& contentRoot) {
  Library library = soundLibrary(contentRoot);
  if (library.knowsNothing() && LibraryFile::wasSetAside(contentRoot)) library.warnings_.emplace_back(wasSetAside);
  return library;
}

Library::Library(LibraryFile file)
    : file_(std::move(file)), people_(database()), media_(database()), chats_(KeptChats::all(database())) {
  for (const KeptChat& chat : chats_) pages_.take(chat.page);
  database().forEachRow("SELECT id FROM export LIMIT 1", [this](const SQLiteRowView&) { isNew_ = false; });
  database().forEachRow("SELECT jid, chat FROM chat_jid", [this](const SQLiteRowView& row) {
    numbersByJID_.insert_or_assign(std::string(row.text(0).value_or("")), row.integer(1).value_or(0));
  });
}

std::vector<std::size_t> Library::chatsOf(const std::vector<std::string>& jids) const {
  std::set<std::size_t> places;
  for (const std::string& jid : jids) {
    const auto number = numbersByJID_.find(jid);
    if (number == numbersByJID_.end()) continue;
    const auto chat = std::ranges::lower_bound(chats_, number->second, {}, &KeptChat::id);
    if (chat != chats_.end() && chat->id == number->second) {
      places.insert(static_cast<std::size_t>(chat - chats_.begin()));
    }
  }
  return {places.begin(), places.end()};
}

std::size_t Library::add(KeptChat chat) {
  chat.page = pages_.uniquify(chat.page);
  chat.id = chats_.empty() ? 1 : chats_.back().id + 1;
  chats_.push_back(std::move(chat));
  identify(chats_.size() - 1, chats_.back().jid);
  return chats_.size() - 1;
}

bool Library::identify(std::size_t place, const std::string& jid) {
  const auto [entry, isNew] = numbersByJID_.try_emplace(jid, chats_[place].id);
  if (!isNew && entry->second == chats_[place].id) return false;
  entry->second = chats_[place].id;
  const SQLiteStatement write(database(), "INSERT OR REPLACE INTO chat_jid (jid, chat) VALUES (?, ?)");
  write.run({jid, chats_[place].id});
  return true;
}

void Library::joinInto(std::size_t place, std::size_t other) {
  const std::int64_t from = chats_[place].id;
  std::vector<std::string> jids;
  for (const auto& [jid, number] : numbersByJID_) {
    if (number == from) jids.push_back(jid);
  }
  for (const std::string& jid : jids) identify(other, jid);
  for (const char* table : {"message WHERE chat", "chat WHERE id"}) {
    const SQLiteStatement remove(database(), std::string("DELETE FROM ").append(table).append(" = ?"));
    remove.run({from});
  }
  chats_.erase(chats_.begin() + static_cast<std::ptrdiff_t>(place));
}
