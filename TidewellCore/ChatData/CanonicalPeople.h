#pragma once

#include <functional>
#include <string>

#include "TidewellCore/ChatData/MessageContent.h"

// One person may stand in a message under a phone number and under a LID.
namespace CanonicalPeople {

// Who somebody of a JID is: the owner, or a person by the JID under which they are known.
using Canonical = std::function<Person(const std::string& jid)>;

// Names everybody as they are known. Of several reactions of one person the newest
// counts, and nobody votes for an option twice. Who removed a message is absent when
// it was its sender: `senderJID`, or, in a chat of two, anybody but the owner.
void unify(MessageDetails& details, const Canonical& canonical, const std::string& senderJID, bool isGroup);

}  // namespace CanonicalPeople
