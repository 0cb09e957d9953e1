#pragma once

#include "TidewellCore/ChatData/GroupEvents.h"
#include "TidewellCore/ChatData/MessageContent.h"

// What WhatsApp tells beside group events (docs/formats/messages.md).
namespace SystemNotices {

// A row of type 10: a Notice, or a CallRecord for what tells of a call. A code that
// is not known is unknownNotice and keeps its code.
MessageContent read(const NoticeRow& row);

// A row of type 55: the same of a channel.
Notice ofChannel(const NoticeRow& row);

// Who the row says it was; absent when it does not.
std::optional<Person> actor(const NoticeRow& row);

}  // namespace SystemNotices
