#include "TidewellCore/ChatData/JID.h"

#include "TidewellCore/Platform/Text.h"

std::string_view JID::userPart(std::string_view jid) { return jid.substr(0, jid.find('@')); }

bool JID::hasServer(std::string_view jid, std::string_view suffix) {
  const auto at = jid.find('@');
  return at != std::string_view::npos && Text::lowercased(jid.substr(at)) == suffix;
}

bool JID::isGroup(std::string_view jid) { return hasServer(jid, GroupJIDSuffix); }

bool JID::isLID(std::string_view jid) { return hasServer(jid, LIDJIDSuffix); }

bool JID::isStatus(std::string_view jid) {
  return hasServer(jid, StatusJIDSuffix) || hasServer(jid, LIDStatusJIDSuffix);
}

std::string JID::ownerOfStatus(std::string_view jid) {
  if (!isStatus(jid)) return std::string(jid);
  const std::string_view server = hasServer(jid, StatusJIDSuffix) ? UserJIDSuffix : LIDJIDSuffix;
  return std::string(userPart(jid)).append(server);
}
