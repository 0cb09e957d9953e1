#include "TidewellCore/Archive/Mentions.h"

#include "TidewellCore/Archive/Wording.h"
#include "TidewellCore/ChatData/MentionedDigits.h"

Mentions::Names Mentions::in(std::string_view text, const Lookup& nameOf) {
  Names names;
  if (!nameOf) return names;
  MentionedDigits::forEach(text, [&](std::size_t, std::string_view digits) {
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
  MentionedDigits::forEach(text, [&](std::size_t at, std::string_view digits) {
    const auto found = names.find(std::string(digits));
    if (found == names.end()) return;
    result.append(text.substr(done, at + 1 - done)).append(found->second);
    done = at + 1 + digits.size();
  });
  return result.append(text.substr(done));
}
