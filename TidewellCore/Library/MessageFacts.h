#pragma once

#include <string>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"

// What a message is beside its text and its file, as JSON in no language (docs/formats/library.md), and back.
namespace MessageFacts {

// Empty for details that say nothing. A place whose coordinates are no numbers loses them. All texts are UTF-8.
std::string write(const MessageDetails& details);

// What is absent, or of another type than it should be, is left empty, a list's entry or the content left out;
// an empty text, and one that is no JSON object, is no details.
MessageDetails read(std::string_view text);

}  // namespace MessageFacts
