#pragma once

#include <string_view>

// What newer versions of WhatsApp store where a name was: a small protobuf message in base64.
namespace EncodedMessage {

// Whether a text is base64 (RFC 4648 section 4, padded rightly or not at all) of
// whole protobuf fields, of which field 1 is a time of this century in Unix seconds.
//
// No word in small letters, in capitals, or with a capital in front is one: such
// a time's bytes need small letters, or digits, and then a capital.
bool holdsTime(std::string_view text);

}  // namespace EncodedMessage
