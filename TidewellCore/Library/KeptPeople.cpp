#include "TidewellCore/Library/KeptPeople.h"

namespace {

std::optional<std::string> copied(const std::optional<std::string_view>& text) {
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

SQLiteStatement::Value valueOf(const std::optional<std::string>& text) {
  return text ? SQLiteStatement::Value(std::string_view(*text)) : SQLiteStatement::Value(SQLiteNull{});
}

}  // namespace

KeptPeople::KeptPeople(const SQLiteDB& database) {
  database.forEachRow("SELECT id, jid, name FROM sender ORDER BY id", [this](const SQLiteRowView& row) {
    // Numbers are given without gaps; one that stands elsewhere is somebody's change of the file.
    if (row.integer(0) != static_cast<std::int64_t>(senders_.size())) {
      throw SQLiteDamage(TidewellError::InvalidDatabase{"The senders of the library are not numbered as they were."});
    }
    Sender sender{.jid = std::string(row.text(1).value_or("")), .name = copied(row.text(2))};
    numbers_.emplace(sender, static_cast<std::int64_t>(senders_.size()));
    senders_.push_back(std::move(sender));
  });
  savedSenders_ = senders_.size();
  database.forEachRow("SELECT jid, name, owner FROM person", [this](const SQLiteRowView& row) {
    people_.insert_or_assign(std::string(row.text(0).value_or("")),
                             Known{.name = copied(row.text(1)), .isOwner = row.integer(2) == 1});
  });
}

const KeptPeople::Sender* KeptPeople::sender(std::int64_t number) const {
  const bool isThere = number >= 0 && static_cast<std::size_t>(number) < senders_.size();
  return isThere ? &senders_[static_cast<std::size_t>(number)] : nullptr;
}

const KeptPeople::Known* KeptPeople::known(std::string_view jid) const {
  const auto found = people_.find(jid);
  return found == people_.end() ? nullptr : &found->second;
}

std::int64_t KeptPeople::enter(Sender sender) {
  const auto [place, isNew] = numbers_.try_emplace(std::move(sender), static_cast<std::int64_t>(senders_.size()));
  if (isNew) senders_.push_back(place->first);
  return place->second;
}

bool KeptPeople::tell(const std::string& jid, const Known& told, bool isNewer) {
  const auto [place, isNew] = people_.try_emplace(jid, told);
  if (!isNew) {
    const bool isNothing = !told.name && !told.isOwner;
    const bool wasNothing = !place->second.name && !place->second.isOwner;
    if (place->second == told || isNothing || (!isNewer && !wasNothing)) return false;
    place->second = told;
  }
  unsavedPeople_.push_back(jid);
  return !isNew;
}

bool KeptPeople::save(const SQLiteDB& database) {
  const bool isNews = savedSenders_ < senders_.size() || !unsavedPeople_.empty();
  if (!isNews) return false;
  const SQLiteStatement sender(database, "INSERT INTO sender (id, jid, name) VALUES (?, ?, ?)");
  for (; savedSenders_ < senders_.size(); ++savedSenders_) {
    const Sender& next = senders_[savedSenders_];
    sender.run({static_cast<std::int64_t>(savedSenders_), next.jid, valueOf(next.name)});
  }
  const SQLiteStatement person(database, "INSERT OR REPLACE INTO person (jid, name, owner) VALUES (?, ?, ?)");
  for (const std::string& jid : unsavedPeople_) {
    const Known& known = people_.at(jid);
    person.run({jid, valueOf(known.name), std::int64_t{known.isOwner}});
  }
  unsavedPeople_.clear();
  return true;
}
