#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"

// The contact cards that somebody sent (docs/formats/messages.md; RFC 2426, and the older version 2.1).
namespace VCardText {

// From the names and the cards that a media item holds. A card gives the name that it
// shows, else the one beside it; a name without a card is a contact too. Cards that say nothing are left out.
SharedContacts contacts(std::optional<std::string_view> names, std::optional<std::string_view> cards);

inline constexpr std::string_view nameSeparator = "_$!<Name-Separator>!$_";
inline constexpr std::string_view cardSeparator = "_$!<VCard-Separator>!$_";

inline constexpr std::size_t mostContacts = 1'000;
inline constexpr std::size_t mostNumbers = 100;  // and addresses, of one contact

}  // namespace VCardText
