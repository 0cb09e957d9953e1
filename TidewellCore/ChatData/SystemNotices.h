#pragma once

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/ChatData/NoticeRow.h"

// What WhatsApp tells beside group events (docs/formats/messages.md). A code that is not
// known is an unknownNotice and keeps its code. The actor is the member whom a notice is about; without
// one it is about the person of the chat. Whose row it is says nothing.
namespace SystemNotices {

// A row of type 10: a Notice, or a CallRecord for what tells of a call.
MessageContent read(const NoticeRow& row);

// A row of type 55, which stands in a channel.
Notice ofChannel(const NoticeRow& row);

}  // namespace SystemNotices
