#include "TidewellCore/Archive/TextMarks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "TidewellCore/Platform/ReadableText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using Scalars = std::u32string_view;

constexpr std::uint8_t bold = 1;
constexpr std::uint8_t italic = 2;
constexpr std::uint8_t strike = 4;
constexpr std::uint8_t mono = 8;
constexpr std::uint8_t dropped = 16;  // a mark that is not shown

// Those within come first.
constexpr std::array<std::pair<std::uint8_t, const char*>, 4> tags{
    {{mono, "code"}, {strike, "s"}, {italic, "em"}, {bold, "strong"}}};

std::string withLineBreaks(std::string_view text) {
  std::string html;
  for (const char c : ReadableText::escapedForHTML(text)) c == '\n' ? html += "<br>" : html += c;
  return html;
}

std::uint8_t styleOf(char32_t mark) {
  if (mark == U'*') return bold;
  if (mark == U'_') return italic;
  return mark == U'~' ? strike : 0;
}

bool isBlank(Scalars text) { return std::ranges::all_of(text, Text::isBlank); }

// Where a line that quotes or lists goes on; absent for any other.
std::optional<std::size_t> signLength(Scalars line) {
  std::size_t length = 0;
  if (line.starts_with(U"> ") || line.starts_with(U"- ")) {
    length = 2;
  } else {
    constexpr std::size_t mostDigits = 3;
    const std::size_t digits = std::min(line.find_first_not_of(U"0123456789"), line.size());
    if (digits > 0 && digits <= mostDigits && line.substr(digits).starts_with(U". ")) length = digits + 2;
  }
  const bool goesOn = length > 0 && length < line.size() && !Text::isBlank(line[length]);
  return goesOn ? std::optional(length) : std::nullopt;
}

// Each character with its style. Neighbours of one style become one element, so that marks
// which cross each other need no care.
class Styled {
 public:
  explicit Styled(Scalars text) : text_(text), styles_(text.size()) {
    styleMono();
    styleEmphasis();
  }

  std::string html() const {
    std::string html;
    std::optional<bool> isAfterBlock;
    bool isAfterEmpty = false;
    for (std::size_t start = 0; start <= text_.size();) {
      const std::size_t end = endOfLine(start);
      const auto sign =
          start < end && styles_[start] == 0 ? signLength(text_.substr(start, end - start)) : std::nullopt;
      const bool isBroken = sign && !isAfterEmpty;  // by the block itself
      if (isAfterBlock == false && !isBroken) html += "<br>";
      html += sign ? block(start, *sign, end) : between(start, end);
      isAfterBlock = sign.has_value();
      isAfterEmpty = start == end;
      start = end + 1;
    }
    return html;
  }

 private:
  // What stands between backticks, three or, within a line, one.
  void styleMono() {
    for (std::size_t start = text_.find(U'`'); start != Scalars::npos;) {
      const Scalars fence = text_.substr(start).starts_with(U"```") ? U"```" : U"`";
      const std::size_t from = start + fence.size();
      const std::size_t to = text_.find(fence, from);
      const Scalars inside = to == Scalars::npos ? Scalars() : text_.substr(from, to - from);
      const bool isFenced = fence.size() > 1;
      const bool stands = !isBlank(inside) && (isFenced || inside.find(U'\n') == Scalars::npos);
      if (stands) setMono(start, from, to, isFenced);
      start = text_.find(U'`', stands ? to + fence.size() : from);
    }
  }

  // The breaks next to a fence are its own.
  void setMono(std::size_t start, std::size_t from, std::size_t to, bool isFenced) {
    set(start, to + (from - start), dropped);
    if (isFenced && text_[from] == U'\n') ++from;
    if (isFenced && text_[to - 1] == U'\n' && to - 1 > from) --to;
    set(from, to, mono);
  }

  void set(std::size_t from, std::size_t to, std::uint8_t style) {
    std::fill(styles_.begin() + static_cast<std::ptrdiff_t>(from), styles_.begin() + static_cast<std::ptrdiff_t>(to),
              style);
  }

  // Pairs of marks within a line: the first before a word, the second behind one.
  void styleEmphasis() {
    struct Open {
      std::uint8_t style = 0;
      std::size_t at = 0;
    };
    std::vector<Open> open;
    for (std::size_t at = 0; at < text_.size(); ++at) {
      at = std::max(at, endOfAddress(at));
      if (at == text_.size()) break;
      if (text_[at] == U'\n') open.clear();
      const std::uint8_t style = styleOf(text_[at]);
      if (style == 0 || (styles_[at] & mono) != 0) continue;
      const auto opener = std::ranges::find(open, style, &Open::style);
      if (opener == open.end()) {
        if (mayOpen(at)) open.push_back({style, at});
      } else if (opener->at + 1 < at && mayClose(at)) {
        for (std::size_t inside = opener->at; inside <= at; ++inside) styles_[inside] |= style;
        styles_[opener->at] |= dropped;
        styles_[at] |= dropped;
        open.erase(opener, open.end());
      }
    }
  }

  bool isOfWord(std::size_t at) const { return at < text_.size() && Text::isAlphanumeric(text_[at]); }

  bool mayOpen(std::size_t at) const {
    if (at + 1 == text_.size() || Text::isBlank(text_[at + 1]) || text_[at + 1] == text_[at]) return false;
    return at == 0 || !isOfWord(at - 1);
  }

  bool mayClose(std::size_t at) const { return !Text::isBlank(text_[at - 1]) && !isOfWord(at + 1); }

  // The end of the web address that begins there; the offset itself where none does. Punctuation
  // behind an address belongs to the sentence.
  std::size_t endOfAddress(std::size_t start) const {
    const Scalars rest = text_.substr(start);
    const bool isAddress = rest.starts_with(U"https://") || rest.starts_with(U"http://") || rest.starts_with(U"www.");
    if (!isAddress || (start > 0 && isOfWord(start - 1))) return start;
    const std::size_t length = std::min(rest.find_first_of(U" \t\n<>\"`\u201C\u201D\u00A0"), rest.size());
    return start + rest.substr(0, length).find_last_not_of(U".,;:!?'\u2019\u2026*_~") + 1;
  }

  // Code may reach over lines and is not cut.
  std::size_t endOfLine(std::size_t start) const {
    std::size_t end = text_.find(U'\n', start);
    while (end != Scalars::npos && (styles_[end] & mono) != 0) end = text_.find(U'\n', end + 1);
    return std::min(end, text_.size());
  }

  std::string block(std::size_t start, std::size_t sign, std::size_t end) const {
    const bool isQuoted = text_[start] == U'>';
    std::string html(TextMarks::blockStart);
    html += isQuoted ? "quoted" : "entry";
    html += "\" dir=\"auto\">";
    if (text_[start] == U'-') {
      html += "• ";
    } else if (!isQuoted) {
      html += Text::fromScalars(text_.substr(start, sign));
    }
    return html + between(start + sign, end) + "</span>";
  }

  std::string between(std::size_t from, std::size_t to) const {
    std::string html;
    for (std::size_t end = from; from < to; from = end) {
      const std::uint8_t style = styles_[from];
      while (end < to && styles_[end] == style) ++end;
      if ((style & dropped) == 0) html += dressed(text_.substr(from, end - from), style);
    }
    return html;
  }

  static std::string dressed(Scalars words, std::uint8_t style) {
    std::string html = withLineBreaks(Text::fromScalars(words));
    for (const auto& [bit, tag] : tags) {
      if ((style & bit) != 0) html = std::string("<").append(tag) + ">" + html + "</" + tag + ">";
    }
    return html;
  }

  Scalars text_;
  std::vector<std::uint8_t> styles_;
};

// Most texts are not, and need no further look.
bool mayBeMarked(std::string_view text) {
  if (text.find_first_of("*_~`") != std::string_view::npos) return true;
  for (std::size_t start = 0; start < text.size();) {
    if (std::string_view(">-0123456789").find(text[start]) != std::string_view::npos) return true;
    start = std::min(text.find('\n', start), text.size()) + 1;
  }
  return false;
}

}  // namespace

std::string TextMarks::html(std::string_view cleanedText) {
  if (!mayBeMarked(cleanedText)) return withLineBreaks(cleanedText);
  const std::u32string scalars = Text::scalars(cleanedText);
  return Styled(scalars).html();
}
