#include "TidewellCore/ChatData/StoredJID.h"

#include <algorithm>

#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::size_t longest = 255;

bool isPlain(std::string_view part) {
  constexpr std::string_view letters =
      "abcdefghijklmnopqrstuvwxyz"
      "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
      "0123456789-_.";
  const bool isRelative = part.starts_with('.') || part.find("..") != std::string_view::npos;
  return !part.empty() && !isRelative && part.find_first_not_of(letters) == std::string_view::npos;
}

}  // namespace

std::optional<std::string> StoredJID::checked(std::string_view text) {
  const auto at = text.find('@');
  if (at == std::string_view::npos || text.size() > longest) return std::nullopt;
  const std::string_view user = text.substr(0, std::min(at, text.find(':')));
  const std::string_view server = text.substr(at + 1);
  const std::string_view device = text.substr(user.size(), at - user.size());
  const bool isDevice = device.find_first_not_of("0123456789", 1) == std::string_view::npos && device != ":";
  if (!isDevice || !isPlain(user) || !isPlain(server)) return std::nullopt;
  return std::string(user) + "@" + Text::lowercased(server);
}

std::optional<Person> StoredJID::person(std::string_view text, std::span<const std::string> ownJIDs) {
  auto jid = checked(text);
  if (!jid) return std::nullopt;
  if (std::ranges::find(ownJIDs, *jid) != ownJIDs.end()) return Person{.isOwner = true};
  return Person{.jid = std::move(*jid)};
}
