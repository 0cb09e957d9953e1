#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/ChatData/ContactDirectory.h"

// Which name stands for a chat and for the sender of a message.
namespace DisplayNames {

// The member's contact name, else first name.
std::optional<std::string> groupMemberDisplayName(const GroupMemberRecord& member);
// The name of a chat; its JID when no name is known.
std::string chatTitle(std::string_view partnerName, std::string_view jid, const ContactDirectory& directory);
// The name of somebody who is known by more than a number. `member` may be null.
std::optional<std::string> identityName(const std::optional<std::string>& jid,
                                        const std::optional<std::string>& messagePushName,
                                        const GroupMemberRecord* member, const ContactDirectory& directory);
// The name of a sender in a group, else the number.
std::optional<std::string> resolveIdentity(const std::optional<std::string>& jid,
                                           const std::optional<std::string>& messagePushName,
                                           const GroupMemberRecord* member, const ContactDirectory& directory);

}  // namespace DisplayNames
