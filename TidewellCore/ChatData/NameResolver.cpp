#include "TidewellCore/ChatData/NameResolver.h"

#include <algorithm>

#include "TidewellCore/ChatData/EncodedMessage.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::size_t shortestPhone = 8;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

enum class CharacterClass { upper, lower, digit, mark, other };

// The alphabets of hexadecimal, base64 and base64url, and the hyphens of UUIDs.
CharacterClass classOf(char c) {
  if (c >= 'A' && c <= 'Z') return CharacterClass::upper;
  if (c >= 'a' && c <= 'z') return CharacterClass::lower;
  if (isDigit(c)) return CharacterClass::digit;
  return std::string_view("+/=_-").find(c) != std::string_view::npos ? CharacterClass::mark : CharacterClass::other;
}

bool partsWords(char c) { return c == '-' || c == '_'; }

// The share of neighbours of different classes. Neither a capital before small
// letters counts nor what parts words, so "MariaFernanda" and "maria-fernanda"
// have few switches and base64 has many.
double switchRate(std::string_view text) {
  std::size_t switches = 0;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (partsWords(text[i - 1]) || partsWords(text[i])) continue;
    const CharacterClass before = classOf(text[i - 1]);
    const CharacterClass after = classOf(text[i]);
    const bool isCapital = before == CharacterClass::upper && after == CharacterClass::lower;
    if (before != after && !isCapital) ++switches;
  }
  return static_cast<double>(switches) / static_cast<double>(text.size() - 1);
}

bool isHexadecimal(std::string_view text) {
  const bool allHex = text.find_first_not_of("0123456789abcdefABCDEF-") == std::string_view::npos;
  return allHex && std::ranges::any_of(text, isDigit);
}

}  // namespace

std::vector<std::string> NameResolver::lookupKeys(std::string_view jid) {
  const std::string trimmed = Text::trimmed(jid);
  const std::string lower = Text::lowercased(trimmed);
  const std::string user(JID::userPart(trimmed));
  std::vector<std::string> keys;
  for (const std::string& key : {trimmed, lower, user, std::string(JID::userPart(lower)), digitsOnly(user)}) {
    if (!key.empty() && std::ranges::find(keys, key) == keys.end()) keys.push_back(key);
  }
  return keys;
}

bool NameResolver::isGroup(std::string_view jid) { return JID::isGroup(jid); }

std::string NameResolver::digitsOnly(std::string_view text) {
  std::string digits;
  std::ranges::copy_if(text, std::back_inserter(digits), isDigit);
  return digits;
}

std::string NameResolver::whatsAppJID(std::string_view identifier) {
  const std::string trimmed = Text::trimmed(identifier);
  const std::string digits = digitsOnly(trimmed);
  if (trimmed.find('@') != std::string::npos || digits.empty()) return trimmed;
  return digits + std::string(UserJIDSuffix);
}

std::string NameResolver::lidJID(std::string_view identifier) {
  const std::string trimmed = Text::trimmed(identifier);
  return trimmed.find('@') != std::string::npos ? trimmed : trimmed + std::string(LIDJIDSuffix);
}

std::string NameResolver::formatPhoneDigits(std::string_view digits) {
  const auto piece = [&](std::size_t offset, std::size_t count) { return std::string(digits.substr(offset, count)); };
  const std::size_t count = digits.size();
  if (digits.starts_with("55") && (count == 12 || count == 13)) {  // Brazil
    return "+55 " + piece(2, 2) + " " + piece(4, count - 8) + "-" + piece(count - 4, 4);
  }
  if (digits.starts_with('1') && count == 11) {  // North America
    return "+1 (" + piece(1, 3) + ") " + piece(4, 3) + "-" + piece(7, 4);
  }
  return "+" + std::string(digits);
}

std::optional<std::string> NameResolver::formattedPhone(std::string_view jid) {
  const std::string trimmed = Text::trimmed(jid);
  if (JID::isGroup(trimmed) || JID::isLID(trimmed)) return std::nullopt;
  const std::string digits = digitsOnly(JID::userPart(trimmed));
  if (digits.size() < shortestPhone) return std::nullopt;
  return formatPhoneDigits(digits);
}

bool NameResolver::isPlausibleDisplayName(std::string_view name) {
  return !Text::trimmed(name).empty() && !looksLikeOpaqueBlob(name);
}

bool NameResolver::looksLikeOpaqueBlob(std::string_view text) {
  constexpr std::size_t suspicious = 16;
  // Of names written without blanks hardly any reach this rate, of base64 nearly all.
  constexpr double machineRate = 0.25;
  const std::string run = Text::trimmed(text);
  if (EncodedMessage::holdsTime(run)) return true;
  const bool isPlainRun = std::ranges::none_of(run, [](char c) { return classOf(c) == CharacterClass::other; });
  if (run.size() < suspicious || !isPlainRun) return false;
  if (isHexadecimal(run) || run.ends_with('=')) return true;
  return switchRate(run) >= machineRate;
}

bool NameResolver::isPlaceholderPartnerName(std::string_view name) {
  constexpr std::u32string_view zeroWidth = U"\u200B\u2060\uFEFF";
  return std::ranges::all_of(Text::scalars(name), [&](char32_t scalar) {
    return Text::isBlank(scalar) || Text::isDirectionalMark(scalar) ||
           zeroWidth.find(scalar) != std::u32string_view::npos;
  });
}

std::optional<std::string> NameResolver::cut(std::optional<std::string> name) {
  if (!name || name->size() <= longestName) return name;
  return Text::firstCharacters(Text::cutToBytes(*name, longestNameInBytes), longestName);
}

std::optional<std::string> NameResolver::trimmedNonEmpty(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  std::string trimmed = Text::trimmed(*text);
  return trimmed.empty() ? std::nullopt : std::optional(std::move(trimmed));
}
