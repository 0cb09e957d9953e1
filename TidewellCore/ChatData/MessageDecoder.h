#pragma once

#include <optional>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/ChatData/MessageRow.h"

// What a row says, in the forms of this house. The texts are views of what the row viewed.
struct DecodedMessage {
  // What its sender wrote: the text, the caption or, of a document without one, its name. Absent for what has none, and
  // for what stands in a text's place and is none.
  std::optional<std::string_view> text;
  // Absent for a plain text and a plain file.
  std::optional<MessageDetails> details;
  // A row that the phone shows nowhere.
  bool isHidden = false;
  // Somebody else's, whoever's row it is: the notice of a call that the owner missed.
  bool isIncoming = false;

  bool operator==(const DecodedMessage&) const = default;
};

// Turns rows of every kind into facts (docs/formats/messages.md). Nothing fails: a blob that is wrong in
// any way is as good as absent, and the message stays with what its columns say.
namespace MessageDecoder {

DecodedMessage decode(const MessageRow& row);

}  // namespace MessageDecoder
