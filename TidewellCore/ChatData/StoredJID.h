#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"

// JIDs as strangers' bytes hold them, which may be anything.
namespace StoredJID {

// The JID of a person, a group or a channel, its server in lower case, without the device that a
// message came from ("15550000002:12@s.whatsapp.net"). Absent for what is no JID: one of
// other characters than ASCII letters, digits, "-", "_" and ".", or of more than 255.
std::optional<std::string> checked(std::string_view text);

// Who that is. The owner may have several JIDs, and none may be known; then he is a person like all.
std::optional<Person> person(std::string_view text, std::span<const std::string> ownJIDs);

}  // namespace StoredJID
