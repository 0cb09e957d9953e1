#pragma once

#include <string>
#include <string_view>

// WhatsApp's identifiers of people and groups: a user part, "@" and a server
// name (docs/formats/chat-schema.md).

inline constexpr std::string_view UserJIDSuffix = "@s.whatsapp.net";
inline constexpr std::string_view GroupJIDSuffix = "@g.us";
inline constexpr std::string_view StatusJIDSuffix = "@status";         // somebody's status posts
inline constexpr std::string_view LIDStatusJIDSuffix = "@lid.status";  // the same of an anonymous identity
inline constexpr std::string_view LIDJIDSuffix = "@lid";               // an anonymous identity linked to a phone number

// Stands for the chat of media whose chat cannot be told.
inline constexpr std::string_view UnknownChatJID = "Unknown";

namespace JID {

// What stands before the first "@"; the whole text when there is none.
std::string_view userPart(std::string_view jid);

// Whether the server part is that of the suffix, letter case ignored.
bool hasServer(std::string_view jid, std::string_view suffix);
bool isGroup(std::string_view jid);
bool isLID(std::string_view jid);
bool isStatus(std::string_view jid);
// Whose status posts these are; the JID itself for any other.
std::string ownerOfStatus(std::string_view jid);

}  // namespace JID
