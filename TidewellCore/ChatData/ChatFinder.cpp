#include "TidewellCore/ChatData/ChatFinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <set>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/ReadableText.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/TidewellError.h"

namespace {

constexpr std::size_t mostListed = 20;
constexpr std::size_t longestShown = 60;     // characters of a name
constexpr std::size_t longestCompared = 64;  // scalars of a name

std::string numberOf(const CanonicalJID& jid) {
  return JID::hasServer(jid.text(), UserJIDSuffix) ? NameResolver::digitsOnly(JID::userPart(jid.text())) : "";
}

// The digits of what is a number and no more, without the zeros that may stand for "+"; empty for any other text.
std::string numberIn(std::string_view text) {
  constexpr std::u32string_view marks = U"+-().\u2010\u2011\u2012\u2013/";
  std::string digits;
  for (const char32_t scalar : Text::scalars(text)) {
    const int digit = Text::digitValue(scalar);
    if (digit >= 0) {
      digits += static_cast<char>('0' + digit);
    } else if (!Text::isBlank(scalar) && !Text::isInvisible(scalar) && marks.find(scalar) == marks.npos) {
      return {};
    }
  }
  return digits.starts_with("00") ? digits.substr(2) : digits;
}

// How many scalars have to be added, removed or replaced.
std::size_t distance(std::u32string_view a, std::u32string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

std::u32string beginning(std::string_view letters) { return Text::scalars(letters).substr(0, longestCompared); }

// How far a name is from what was wanted; absent where nobody would take one for the other.
std::optional<std::size_t> farness(const std::string& letters, const std::string& wanted) {
  if (letters.empty() || wanted.empty()) return std::nullopt;
  if (letters.find(wanted) != std::string::npos) return 0;
  const std::u32string a = beginning(letters);
  const std::u32string b = beginning(wanted);
  const std::size_t apart = distance(a, b);
  return apart <= std::max<std::size_t>(1, std::max(a.size(), b.size()) / 3) ? std::optional(apart) : std::nullopt;
}

// What stands in a backup, without what would steer a terminal or turn its line around.
std::string legible(std::string_view text) {
  std::u32string scalars = Text::scalars(ReadableText::onOneLine(ReadableText::cleaned(text)));
  std::erase_if(scalars, Text::isDirectionalMark);
  return Text::fromScalars(scalars);
}

std::string lineOf(const std::string& name, const CanonicalJID& jid) {
  const std::string title = "“" + Text::firstCharacters(name, longestShown) + "”";
  const std::string digits = numberOf(jid);
  const std::string number = digits.empty() ? "" : " · " + NameResolver::formatPhoneDigits(digits);
  return legible(title + number + " · " + jid.text());
}

std::vector<std::string> cutList(std::vector<std::string> lines) {
  if (lines.size() <= mostListed) return lines;
  const std::size_t more = lines.size() - mostListed;
  lines.resize(mostListed);
  lines.push_back(fmt::format("… and {} more", more));
  return lines;
}

}  // namespace

ChatFinder::ChatFinder(const BackupSource& source) : snapshot_(source.snapshot) {
  std::set<CanonicalJID> jids;
  for (const ChatStorageSnapshot::Chat& chat : snapshot_.chats()) {
    if (chat.messageCount > 0) jids.insert(chat.jid);
  }
  for (const ManifestFile& file : source.media()) {
    jids.insert(snapshot_.ownerJID(file.relativePath, FileNaming::chatJID(file.relativePath)));
  }
  for (const CanonicalJID& jid : jids) {
    const std::string name = snapshot_.chatTitle(jid.text());
    entries_.push_back({.jid = jid, .name = name, .letters = Text::baseLetters(name), .number = numberOf(jid)});
  }
}

std::vector<CanonicalJID> ChatFinder::all() const {
  std::vector<CanonicalJID> jids;
  for (const Entry& entry : entries_) jids.push_back(entry.jid);
  return jids;
}

const CanonicalJID& ChatFinder::find(std::string_view wanted) const {
  const auto named = std::ranges::lower_bound(entries_, snapshot_.canonicalChatJID(wanted), {}, &Entry::jid);
  if (named != entries_.end() && named->jid == snapshot_.canonicalChatJID(wanted)) return named->jid;
  const std::string letters = Text::baseLetters(wanted);
  const std::string number = numberIn(wanted);
  std::vector<const Entry*> found;
  for (const Entry& entry : entries_) {
    const bool isNumber = !number.empty() && entry.number == number;
    if (isNumber || (!letters.empty() && entry.letters == letters)) found.push_back(&entry);
  }
  if (found.empty()) reportUnknown(wanted);
  if (found.size() == 1) return found.front()->jid;
  std::vector<std::string> lines;
  for (const Entry* entry : found) lines.push_back(lineOf(entry->name, entry->jid));
  throw TidewellError::ambiguousChat(std::string(wanted), cutList(std::move(lines)));
}

void ChatFinder::reportUnknown(std::string_view wanted) const {
  const std::string letters = Text::baseLetters(wanted);
  std::vector<std::pair<std::size_t, const Entry*>> near;
  for (const Entry& entry : entries_) {
    if (const auto apart = farness(entry.letters, letters)) near.emplace_back(*apart, &entry);
  }
  std::ranges::stable_sort(near, {}, &std::pair<std::size_t, const Entry*>::first);
  std::vector<std::string> lines;
  for (const auto& [apart, entry] : near) lines.push_back(lineOf(entry->name, entry->jid));
  const bool areNear = !lines.empty();
  for (const Entry& entry : entries_) {
    if (!areNear) lines.push_back(lineOf(entry.name, entry.jid));
  }
  throw TidewellError::unknownChat(std::string(wanted), cutList(std::move(lines)), areNear);
}
