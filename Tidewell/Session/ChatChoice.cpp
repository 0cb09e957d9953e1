#include "Tidewell/Session/ChatChoice.h"

#include <algorithm>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/Platform/Text.h"

namespace {

std::optional<Day> dayOf(const std::string& typed) { return dayFromISO8601(Text::trimmedPart(typed)); }

bool isBlank(const std::string& typed) { return Text::trimmedPart(typed).empty(); }

// Empty for what holds letters as well.
std::string digitsOfNumber(const std::string& text) {
  const auto isLetter = [](char32_t scalar) { return Text::isAlphanumeric(scalar) && Text::digitValue(scalar) < 0; };
  return std::ranges::any_of(Text::scalars(text), isLetter) ? "" : NameResolver::digitsOnly(text);
}

}  // namespace

bool ChatChoice::fitsSearch(const ScanChat& chat) const {
  if (isBlank(search)) return true;
  const std::string digits = digitsOfNumber(search);
  const bool isInNumber = !digits.empty() && JID::userPart(chat.jid).find(digits) != std::string_view::npos;
  return isInNumber || Text::baseLetters(chat.name).find(Text::baseLetters(search)) != std::string::npos;
}

std::int64_t ChatChoice::count(const ScanResult& scan) const {
  return std::ranges::count_if(scan.chats, [this](const ScanChat& chat) { return has(chat); });
}

MediaTypeStats ChatChoice::stats(const ScanResult& scan, const MediaKinds& kinds) const {
  if (leftOut.empty()) return {.count = scan.count(kinds), .byteCount = scan.bytes(kinds)};
  MediaTypeStats all;
  for (const ScanChat& chat : scan.chats) {
    if (!has(chat)) continue;
    const MediaTypeStats stats = chat.stats(kinds);
    all.count += stats.count;
    all.byteCount = saturatingAdd(all.byteCount, stats.byteCount);
  }
  return all;
}

bool ChatChoice::hasDays() const { return !isBlank(since) || !isBlank(until); }

std::optional<std::string_view> ChatChoice::fault() const {
  const std::optional<Day> first = dayOf(since);
  const std::optional<Day> last = dayOf(until);
  if ((!first && !isBlank(since)) || (!last && !isBlank(until))) return "Write a day like this: 2024-05-31";
  if (first && last && *last < *first) return "The last day comes before the first one";
  return std::nullopt;
}

Selection ChatChoice::selection(const ScanResult& scan) const {
  Selection selection{.since = dayOf(since), .until = dayOf(until)};
  for (const ScanChat& chat : scan.chats) {
    if (!has(chat)) selection.notChats.push_back(chat.jid);
  }
  return selection;
}
