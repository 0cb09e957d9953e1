#pragma once

#include <optional>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/ChatData/MessageRow.h"

// What the columns of a row say about its medium, whether there is a file or not.
namespace RowMedia {

// What the type of a message, else its item's MIME type, says it is; absent for no medium.
std::optional<MessagePart> partOf(const MessageRow& row);
std::optional<MessagePart> partOfMIMEType(const MessageRow& row);

// What stands in the place of the file when there is none.
MissingMedia missing(const MessageRow& row, MessagePart part);

// What was written under it: the text, else the title, which is what phones keep.
std::optional<std::string_view> caption(const MessageRow& row);
// A title beside a text that is another.
std::optional<std::string_view> titleAboveText(const MessageRow& row);
// The name of a document, and what was written under it, which is something else.
std::optional<std::string_view> documentName(const MessageRow& row);
std::optional<std::string_view> documentCaption(const MessageRow& row);

}  // namespace RowMedia
