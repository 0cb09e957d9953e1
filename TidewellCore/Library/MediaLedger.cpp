#include "TidewellCore/Library/MediaLedger.h"

#include <algorithm>

#include "TidewellCore/Platform/PathText.h"

namespace {

using Value = SQLiteStatement::Value;

// NULL for a digest that is not known.
Value valueOf(const std::string& digest) {
  return digest.empty() ? Value(SQLiteNull{}) : Value(std::string_view(digest));
}

KeptMedium mediumOf(const SQLiteRowView& row) {
  KeptMedium medium{.path = std::string(row.text(1).value_or("")), .size = row.integer(4).value_or(0)};
  if (row.text(2)) medium.place = ExportPlace{std::string(*row.text(2)), std::string(row.text(3).value_or(""))};
  if (const auto seconds = row.number(5)) medium.date = dateFromUnixTime(*seconds);
  medium.kind = MediaKind::fromRawValue(row.text(6).value_or("")).value_or(MediaKind::documents);
  medium.chatJID = row.text(7).value_or("");
  medium.isThere = medium.place && row.integer(8) == 1;
  medium.digest = row.text(9).value_or("");
  medium.sentDigest = row.text(10).value_or("");
  medium.isDoubtful = row.integer(11) == 1;
  return medium;
}

}  // namespace

MediaLedger::MediaLedger(const SQLiteDB& database) {
  database.forEachRow(
      "SELECT id, path, folder, name, size, date, kind, chat, there, digest, sent_digest, doubtful FROM medium"
      " ORDER BY id",
      [this](const SQLiteRowView& row) {
        // Numbers are given without gaps; one that stands elsewhere is somebody's change of the file.
        if (row.integer(0) != static_cast<std::int64_t>(media_.size())) {
          throw SQLiteDamage(TidewellError::InvalidDatabase{"The media of the library are not numbered as they were."});
        }
        media_.push_back(mediumOf(row));
        index(media_.size() - 1);
      });
  isSettled_.resize(media_.size());
  isUnsaved_.resize(media_.size());
  savedCount_ = media_.size();
}

const KeptMedium* MediaLedger::medium(std::int64_t number) const {
  const bool isThere = number >= 0 && static_cast<std::size_t>(number) < media_.size();
  return isThere ? &media_[static_cast<std::size_t>(number)] : nullptr;
}

const KeptMedium* MediaLedger::newest(std::string_view path) const {
  const auto found = newest_.find(path);
  return found == newest_.end() ? nullptr : &media_[found->second];
}

std::int64_t MediaLedger::enter(std::string_view path) {
  const auto found = newest_.find(path);
  if (found != newest_.end()) return static_cast<std::int64_t>(found->second);
  media_.push_back({.path = std::string(path), .kind = MediaKind::classify(PathText::extension(path))});
  index(media_.size() - 1);
  touch(media_.size() - 1);
  return static_cast<std::int64_t>(media_.size() - 1);
}

// The one that counts for its path from now on.
void MediaLedger::index(std::size_t number) {
  const auto [newest, isFirst] = newest_.try_emplace(media_[number].path, number);
  if (isFirst || newest->second == number) return;
  former_.emplace(newest->first, newest->second);
  newest->second = number;
}

std::size_t MediaLedger::numberOf(const KeptMedium& medium) {
  const auto [begin, end] = former_.equal_range(medium.path);
  const auto same = std::find_if(begin, end, [&](const auto& entry) {
    const KeptMedium& other = media_[entry.second];
    return other.place == medium.place && other.size == medium.size;
  });
  std::size_t number = media_.size();
  if (same == end) {
    media_.push_back({.path = medium.path});
    touch(number);
  } else {
    number = same->second;
    former_.erase(same);
  }
  index(number);
  return number;
}

void MediaLedger::touch(std::size_t number) {
  isSettled_.resize(media_.size());
  isUnsaved_.resize(media_.size());
  isUnsaved_[number] = true;
}

void MediaLedger::displace(std::size_t number) {
  touch(number);
  if (number < savedCount_) displaced_.insert(static_cast<std::int64_t>(number));
}

// A file of another size under the same path is another file, once one was exported.
void MediaLedger::settle(KeptMedium medium, bool isCopied) {
  auto number = static_cast<std::size_t>(enter(medium.path));
  if (isSettled_[number]) return;
  const KeptMedium& known = media_[number];
  if (known.place && known.size != medium.size && known.isThere && known.place != medium.place) {
    number = numberOf(medium);
  }
  isSettled_[number] = true;
  if (media_[number].size == medium.size) {
    if (!isCopied) medium.digest = media_[number].digest;
    if (medium.sentDigest.empty()) medium.sentDigest = media_[number].sentDigest;
  }
  if (media_[number] == medium) return;
  // The path's text stays where it is, since it is what the entry is found by.
  KeptMedium& entry = media_[number];
  const bool isElsewhere = entry.place != medium.place || entry.isThere != medium.isThere;
  entry.place = std::move(medium.place);
  entry.size = medium.size;
  entry.date = medium.date;
  entry.kind = medium.kind;
  entry.chatJID = std::move(medium.chatJID);
  entry.isThere = medium.isThere;
  entry.digest = std::move(medium.digest);
  entry.sentDigest = std::move(medium.sentDigest);
  entry.isDoubtful = medium.isDoubtful;
  isElsewhere ? displace(number) : touch(number);
}

void MediaLedger::review(const std::function<bool(const ExportPlace& place, std::int64_t size)>& isThere) {
  for (std::size_t number = 0; number < media_.size(); ++number) {
    KeptMedium& medium = media_[number];
    if (isSettled_[number] || !medium.place) continue;
    const bool stands = isThere(*medium.place, medium.size);
    if (stands == medium.isThere) continue;
    medium.isThere = stands;
    displace(number);
  }
}

void MediaLedger::keepDigest(std::int64_t number, std::string digest) {
  media_[static_cast<std::size_t>(number)].digest = std::move(digest);
  touch(static_cast<std::size_t>(number));
}

bool MediaLedger::relocate(const std::function<std::optional<ExportPlace>(const ExportPlace& former)>& newPlace) {
  bool hasChanged = false;
  for (std::size_t number = 0; number < media_.size(); ++number) {
    std::optional<ExportPlace>& place = media_[number].place;
    auto moved = place ? newPlace(*place) : std::nullopt;
    if (!moved || moved == place) continue;
    place = std::move(moved);
    displace(number);
    hasChanged = true;
  }
  return hasChanged;
}

bool MediaLedger::save(const SQLiteDB& database) {
  bool isNews = false;
  const SQLiteStatement write(
      database,
      "INSERT OR REPLACE INTO medium (id, path, folder, name, size, date, kind, chat, there, digest, sent_digest,"
      " doubtful) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  for (std::size_t number = 0; number < media_.size(); ++number) {
    if (!isUnsaved_[number]) continue;
    const KeptMedium& medium = media_[number];
    const auto& place = medium.place;
    write.run({static_cast<std::int64_t>(number), std::string_view(medium.path),
               place ? Value(std::string_view(place->folder)) : Value(SQLiteNull{}),
               place ? Value(std::string_view(place->name)) : Value(SQLiteNull{}), medium.size,
               medium.date ? Value(unixTime(*medium.date)) : Value(SQLiteNull{}), medium.kind.rawValue(),
               std::string_view(medium.chatJID), std::int64_t{medium.isThere}, valueOf(medium.digest),
               valueOf(medium.sentDigest), medium.isDoubtful ? Value(std::int64_t{1}) : Value(SQLiteNull{})});
    isUnsaved_[number] = false;
    isNews = true;
  }
  savedCount_ = media_.size();
  displaced_.clear();
  return isNews;
}
