#pragma once

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/ProtobufReader.h"

namespace QuotedMessage {

// Sets part and words of a reply from the copy of its original, a message as
// WhatsApp sends it (docs/formats/messages.md). Throws ProtobufError.
void read(ProtobufReader copy, Quote& quote);

}  // namespace QuotedMessage
