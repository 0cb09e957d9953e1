#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/Bytes.h"

namespace Base64 {

// Decodes RFC 4648 section 4, white space anywhere. Absent for any other character.
std::optional<Bytes> decode(std::string_view text);

// Encodes after the same section, padded, in one line.
std::string encode(ByteView bytes);

}  // namespace Base64
