#pragma once

#include <algorithm>
#include <string_view>

// Whom a text mentions: "@" and the digits of a number or of an anonymous identity.
namespace MentionedDigits {

inline constexpr std::size_t fewest = 5;
inline constexpr std::size_t most = 20;

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
// What an address or a word goes on with.
inline bool isOfWord(char c) { return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

// The digits behind the "@" at the offset; empty when they are nobody's.
inline std::string_view at(std::string_view text, std::size_t offset) {
  if (offset > 0 && isOfWord(text[offset - 1])) return {};
  const std::string_view rest = text.substr(offset + 1);
  const auto count = static_cast<std::size_t>(std::ranges::find_if_not(rest, isDigit) - rest.begin());
  if (count < fewest || count > most) return {};
  return count < rest.size() && isOfWord(rest[count]) ? std::string_view() : rest.substr(0, count);
}

// Calls `visit` with the offset of the "@" and the digits of every mention.
template <typename Visitor>
void forEach(std::string_view text, Visitor visit) {
  for (auto offset = text.find('@'); offset != std::string_view::npos; offset = text.find('@', offset + 1)) {
    if (const std::string_view digits = at(text, offset); !digits.empty()) visit(offset, digits);
  }
}

}  // namespace MentionedDigits
