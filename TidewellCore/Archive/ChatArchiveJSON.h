#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/Json.h"

// The archive's data as script text: JSON values assigned to members of
// `window`, since a page opened from disk may load scripts and nothing else.
namespace ChatArchiveJSON {

// Compact, the keys in byte order. No "<" and no line or paragraph separator
// stands in it unescaped, so it can neither close a script element nor break a
// line. Throws TidewellError::ioFailure for a text that is not UTF-8.
std::string stringify(const Json& value);
// The same at the end of `text`.
void append(std::string& text, const Json& value);
void append(std::string& text, const Json::Object& object);

// "window.NAME = VALUE;" and a line break.
std::string assignment(std::string_view identifier, const Json& value);

// The value assigned to that member; absent when there is none that can be read.
std::optional<Json> parseAssignment(std::string_view text, std::string_view identifier);
// The text of that value, a part of `text`; empty when there is none.
std::string_view assignedValue(std::string_view text, std::string_view identifier);
// The JSON value at the beginning of a text, white space before it left out;
// empty when none is complete.
std::string_view extractJSONValue(std::string_view text);
// What follows the assignment to that member; empty when there is none.
std::string_view remainderAfterAssignment(std::string_view text, std::string_view identifier);

}  // namespace ChatArchiveJSON
