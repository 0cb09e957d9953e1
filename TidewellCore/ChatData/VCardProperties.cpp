#include "TidewellCore/ChatData/VCardProperties.h"

#include <algorithm>
#include <array>

#include "TidewellCore/Platform/Text.h"

namespace {

class Lines {
 public:
  explicit Lines(std::string_view text) : rest_(text) {}

  bool isAtEnd() const { return rest_.empty(); }
  // Whether the next line continues the one before it.
  bool isFolded() const { return rest_.starts_with(' ') || rest_.starts_with('\t'); }

  std::string_view take() {
    const std::string_view line = rest_.substr(0, rest_.find_first_of("\r\n"));
    rest_.remove_prefix(line.size());
    rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : std::min<std::size_t>(rest_.size(), 1));
    return line;
  }

 private:
  std::string_view rest_;
};

// What stands before a property's colon.
struct Head {
  std::string name;
  std::string waID;
  std::string charset;
  bool isQuotedPrintable = false;

  bool isWanted() const {
    constexpr std::array<std::string_view, 5> wanted = {"FN", "N", "ORG", "TEL", "EMAIL"};
    return std::ranges::find(wanted, name) != wanted.end();
  }

  void readParameter(std::string_view parameter) {
    const auto end = std::min(parameter.find('='), parameter.size());
    const std::string key = Text::uppercasedASCII(parameter.substr(0, end));
    const std::string_view value = parameter.substr(std::min(end + 1, parameter.size()));
    const std::string capitals = Text::uppercasedASCII(value);
    if (key == "WAID") waID = value;
    if (key == "CHARSET") charset = capitals;
    if (key == "QUOTED-PRINTABLE" || (key == "ENCODING" && capitals == "QUOTED-PRINTABLE")) isQuotedPrintable = true;
  }
};

// Calls `part` for each part of the text between separators that stand outside quotation marks.
template <typename Part>
void split(std::string_view text, char separator, Part part) {
  bool isQuoted = false;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') isQuoted = !isQuoted;
    if (text[i] != separator || isQuoted) continue;
    part(text.substr(start, i - start));
    start = i + 1;
  }
  part(text.substr(start));
}

Head headOf(std::string_view text) {
  Head head;
  bool isFirst = true;
  split(text, ';', [&](std::string_view part) {
    if (isFirst) {
      head.name = Text::uppercasedASCII(part.substr(part.rfind('.') + 1));
    } else {
      head.readParameter(part);
    }
    isFirst = false;
  });
  return head;
}

// The colon that ends the head; the line's length when there is none.
std::size_t colonIn(std::string_view line) {
  std::size_t length = line.size();
  bool isFirst = true;
  split(line, ':', [&](std::string_view part) {
    if (isFirst) length = part.size();
    isFirst = false;
  });
  return length;
}

// A line, and those that continue it as long as its head goes on (RFC 2426, section 2.6).
std::string takeLine(Lines& lines) {
  constexpr std::size_t longestHead = 256;
  std::string line(lines.take());
  while (lines.isFolded() && line.size() < longestHead && colonIn(line) == line.size()) {
    line += lines.take().substr(1);
  }
  return line;
}

// Takes the lines that belong to the value as well.
std::string takeValue(std::string_view part, const Head& head, Lines& lines) {
  std::string value;
  for (;;) {
    const bool isSoftBreak = head.isQuotedPrintable && part.ends_with('=');
    if (isSoftBreak) part.remove_suffix(1);
    if (head.isWanted()) value += part.substr(0, VCardProperties::longestValue - value.size());
    if (isSoftBreak && !lines.isAtEnd()) {
      part = lines.take();
    } else if (lines.isFolded()) {
      part = lines.take().substr(1);
    } else {
      return value;
    }
  }
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// RFC 2045, section 6.7. What is no whole escape stays as it is.
std::string fromQuotedPrintable(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
    const bool isEscape = text[i] == '=' && low >= 0;
    decoded += isEscape ? static_cast<char>(high * 16 + low) : text[i];
    if (isEscape) i += 2;
  }
  return decoded;
}

std::string fromLatin1(std::string_view bytes) {
  std::u32string scalars;
  for (const char byte : bytes) scalars += static_cast<unsigned char>(byte);
  return Text::fromScalars(scalars);
}

std::string decoded(const std::string& value, const Head& head) {
  if (!head.isQuotedPrintable) return Text::repaired(value);
  const std::string bytes = fromQuotedPrintable(value);
  constexpr std::array<std::string_view, 3> latin = {"ISO-8859-1", "ISO-8859-15", "WINDOWS-1252"};
  const bool isLatin1 = std::ranges::find(latin, head.charset) != latin.end();
  return isLatin1 ? fromLatin1(bytes) : Text::repaired(bytes);
}

}  // namespace

std::vector<VCardProperty> VCardProperties::read(std::string_view card, std::size_t most) {
  std::vector<VCardProperty> properties;
  for (Lines lines(card); !lines.isAtEnd() && properties.size() < most;) {
    const std::string line = takeLine(lines);
    const std::string_view whole = line;
    const std::size_t colon = colonIn(whole);
    Head head = headOf(whole.substr(0, colon));
    const std::string value = takeValue(whole.substr(std::min(colon + 1, whole.size())), head, lines);
    if (!head.isWanted() || colon == line.size()) continue;
    properties.push_back({.name = head.name, .waID = std::move(head.waID), .value = decoded(value, head)});
  }
  return properties;
}
