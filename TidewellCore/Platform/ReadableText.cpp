#include "TidewellCore/Platform/ReadableText.h"

#include <algorithm>

#include "TidewellCore/Platform/Text.h"

namespace {

// Whether a text may hold a control character that is not a line feed or a tab:
// those of ASCII, and U+0080 to U+009F, which begin with the byte C2.
bool mayHoldControls(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F || byte == 0xC2;
  });
}

std::u32string withLineFeeds(std::u32string_view scalars) {
  std::u32string result;
  for (std::size_t i = 0; i < scalars.size(); ++i) {
    const bool isFirstOfTwo = scalars[i] == U'\r' && i + 1 < scalars.size() && scalars[i + 1] == U'\n';
    if (!isFirstOfTwo) result += scalars[i] == U'\r' ? U'\n' : scalars[i];
  }
  return result;
}

std::string_view entity(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return {};
  }
}

}  // namespace

std::string ReadableText::cleaned(std::string_view text) {
  if (!mayHoldControls(text)) return std::string(text);
  std::u32string scalars = withLineFeeds(Text::scalars(text));
  std::ranges::replace_if(
      scalars, [](char32_t c) { return Text::isControl(c) && c != U'\n' && c != U'\t'; }, U'\uFFFD');
  return Text::fromScalars(scalars);
}

std::string ReadableText::onOneLine(std::string_view text) {
  std::u32string line;
  bool isAfterBlank = true;
  for (const char32_t scalar : Text::scalars(text)) {
    const bool isBlank = Text::isBlank(scalar);
    if (!isBlank) line += scalar;
    if (isBlank && !isAfterBlank) line += U' ';
    isAfterBlank = isBlank;
  }
  if (line.ends_with(U' ')) line.pop_back();
  return Text::fromScalars(line);
}

std::string ReadableText::escapedForHTML(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const std::string_view escaped = entity(c);
    escaped.empty() ? result += c : result += escaped;
  }
  return result;
}
