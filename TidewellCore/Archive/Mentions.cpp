#include "TidewellCore/Archive/Mentions.h"

#include <algorithm>

#include "TidewellCore/Archive/Wording.h"

namespace {

constexpr std::size_t fewestDigits = 5;
constexpr std::size_t mostDigits = 20;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// What an address or a word goes on with.
bool isOfWord(char c) { return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

// The digits behind the "@" at the offset; empty when they are nobody's.
std::string_view digitsAt(std::string_view text, std::size_t at) {
  if (at > 0 && isOfWord(text[at - 1])) return {};
  const std::string_view rest = text.substr(at + 1);
  const auto count = static_cast<std::size_t>(std::ranges::find_if_not(rest, isDigit) - rest.begin());
  if (count < fewestDigits || count > mostDigits) return {};
  return count < rest.size() && isOfWord(rest[count]) ? std::string_view() : rest.substr(0, count);
}

// Calls `visit` with the offset and the digits of every mention.
template <typename Visitor>
void forEach(std::string_view text, Visitor visit) {
  for (auto at = text.find('@'); at != std::string_view::npos; at = text.find('@', at + 1)) {
    if (const std::string_view digits = digitsAt(text, at); !digits.empty()) visit(at, digits);
  }
}

}  // namespace

Mentions::Names Mentions::in(std::string_view text, const Lookup& nameOf) {
  Names names;
  if (!nameOf) return names;
  forEach(text, [&](std::size_t, std::string_view digits) {
    std::string key(digits);
    if (names.contains(key)) return;
    if (const auto name = nameOf(digits)) names.emplace(std::move(key), Wording::line(*name));
  });
  return names;
}

std::string Mentions::named(std::string_view text, const Names& names) {
  if (names.empty()) return std::string(text);
  std::string result;
  std::size_t done = 0;
  forEach(text, [&](std::size_t at, std::string_view digits) {
    const auto found = names.find(std::string(digits));
    if (found == names.end()) return;
    result.append(text.substr(done, at + 1 - done)).append(found->second);
    done = at + 1 + digits.size();
  });
  return result.append(text.substr(done));
}
