#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Identifiers and names as texts: how a JID may be written, and what can be a
// name. Whose name is shown is for DisplayNames.
namespace NameResolver {

// The spellings under which a JID is filed and looked up, the most telling first:
// trimmed, lower-cased, its user part, that lower-cased, its digits.
std::vector<std::string> lookupKeys(std::string_view jid);
bool isGroup(std::string_view jid);
// The ASCII digits of a text, in order.
std::string digitsOnly(std::string_view text);
// A JID from a number or from a JID.
std::string whatsAppJID(std::string_view identifier);
std::string lidJID(std::string_view identifier);

// "+55 11 90000-1111"; takes digits only, country code first.
std::string formatPhoneDigits(std::string_view digits);
// Absent for groups, for LIDs and below 8 digits.
std::optional<std::string> formattedPhone(std::string_view jid);

// Names and JIDs that are longer than any screen are cut when they are read, so
// that whatever is made of them stays cheap. In characters as people count them,
// and in bytes for those that are of many.
inline constexpr std::size_t longestName = 10'000;
inline constexpr std::size_t longestNameInBytes = 40'000;
std::optional<std::string> cut(std::optional<std::string> name);

// Whether a text can be a person's name: something to read, and no machine identifier.
bool isPlausibleDisplayName(std::string_view name);
// A long run of letters and digits without order, as hashes and base64 leave it,
// or a short one that is an EncodedMessage.
bool looksLikeOpaqueBlob(std::string_view text);
// A name that shows nothing: blanks and directional marks alone, or nothing at all.
bool isPlaceholderPartnerName(std::string_view name);
std::optional<std::string> trimmedNonEmpty(const std::optional<std::string>& text);

}  // namespace NameResolver
