#pragma once

#include <optional>
#include <string>
#include <string_view>

// Which JID is the owner's, where rows tell it.
namespace OwnJID {

// From what the owner's own messages keep in place of a name (ZPUSHNAME): base64 of a protobuf, in which field
// 3 is the sender's JID. Absent for anything else. Of others' messages it would be theirs.
std::optional<std::string> inPushName(std::string_view pushName);

}  // namespace OwnJID
