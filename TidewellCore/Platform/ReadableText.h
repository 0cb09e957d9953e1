#pragma once

#include <string>
#include <string_view>

// Text as people wrote it, made fit for pages and data files.
namespace ReadableText {

// CRLF and CR become LF; other control characters than line breaks and tabs become U+FFFD.
std::string cleaned(std::string_view text);

// White space of any sort and length becomes a single blank, none at the ends.
std::string onOneLine(std::string_view text);

// For HTML text and attribute values in double quotes.
std::string escapedForHTML(std::string_view text);

}  // namespace ReadableText
