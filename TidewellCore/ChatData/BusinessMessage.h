#pragma once

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/ProtobufReader.h"

// The messages of businesses as ZMETADATA keeps them, each from the message of its
// field (docs/formats/messages.md). All throw ProtobufError.
namespace BusinessMessage {

// Field 24: a template.
BusinessText fromTemplate(ProtobufReader metadataField);
// Field 51: words with buttons below them.
BusinessText fromButtons(ProtobufReader metadataField);
// Field 43: a list to choose from.
BusinessText fromList(ProtobufReader metadataField);
// Field 26; absent when it has no title.
std::optional<Product> product(ProtobufReader metadataField);

}  // namespace BusinessMessage
