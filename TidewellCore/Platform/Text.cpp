#include "TidewellCore/Platform/Text.h"

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "TidewellCore/Platform/Bytes.h"

namespace {

void check(UErrorCode status) {
  if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

// Without a way out of the loop, so that many letters are looked at in one step.
bool isASCII(std::string_view text) {
  unsigned char all = 0;
  for (const char c : text) all |= static_cast<unsigned char>(c);
  return all < 0x80;
}

icu::StringPiece piece(std::string_view text) { return {text.data(), static_cast<std::int32_t>(text.size())}; }

std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

UChar32 codePoint(char32_t scalar) { return static_cast<UChar32>(scalar); }

// ICU's macros convert between signs and widths without saying so.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"

// Moves `offset` behind the next scalar; negative for an invalid byte sequence.
UChar32 nextScalar(std::string_view text, std::size_t& offset) {
  UChar32 scalar = 0;
  const char* bytes = text.data();
  U8_NEXT(bytes, offset, text.size(), scalar);
  return scalar;
}

void appendScalar(std::string& text, char32_t scalar) {
  std::uint8_t buffer[U8_MAX_LENGTH];
  std::size_t length = 0;
  U8_APPEND_UNSAFE(buffer, length, static_cast<std::uint32_t>(scalar));
  text.append(textOf({buffer, length}));
}

#pragma GCC diagnostic pop

// The offset behind the scalar that begins at `offset`; an invalid byte sequence reads as U+FFFD.
std::size_t decode(std::string_view text, std::size_t offset, char32_t& scalar) {
  const UChar32 next = nextScalar(text, offset);
  scalar = next < 0 ? U'\uFFFD' : static_cast<char32_t>(next);
  return offset;
}

// The byte offsets at which user-perceived characters end, one after another, until `visit` says stop.
template <typename Visitor>
void forEachCharacterEnd(std::string_view text, Visitor visit) {
  // Between two ASCII characters, of which the first is no carriage return, there is always a boundary (UAX #29), and
  // most texts are nothing else: an iterator costs more to make than they do to read.
  const auto isASCIIAt = [&](std::size_t i) { return i == text.size() || static_cast<unsigned char>(text[i]) < 0x80; };
  std::size_t start = 0;
  while (start < text.size() && isASCIIAt(start) && text[start] != '\r' && isASCIIAt(start + 1)) {
    if (!visit(++start)) return;
  }
  if (start == text.size()) return;
  text.remove_prefix(start);
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  check(status);
  UText source = UTEXT_INITIALIZER;
  utext_openUTF8(&source, text.data(), static_cast<std::int64_t>(text.size()), &status);
  const std::unique_ptr<UText, decltype(&utext_close)> closer(&source, &utext_close);
  characters->setText(&source, status);
  check(status);
  for (auto end = characters->next(); end != icu::BreakIterator::DONE; end = characters->next()) {
    if (!visit(start + static_cast<std::size_t>(end))) return;
  }
}

// The block Combining Diacritical Marks.
bool isAccent(char32_t scalar) { return scalar >= 0x300 && scalar <= 0x36F; }

// Unicode takes strokes for parts of the letter.
char32_t withoutStroke(char32_t scalar) {
  constexpr std::u32string_view stroked = U"đħıłøŧ";
  constexpr std::u32string_view plain = U"dhilot";
  const std::size_t place = stroked.find(scalar);
  return place == std::u32string_view::npos ? scalar : plain[place];
}

// The last offset up to `limit` at which a scalar ends.
std::size_t scalarBoundary(std::string_view text, std::size_t limit) {
  const auto isInside = [&](std::size_t offset) { return (static_cast<unsigned char>(text[offset]) & 0xC0) == 0x80; };
  while (limit > 0 && isInside(limit)) --limit;
  return limit;
}

}  // namespace

bool Text::isValid(std::string_view utf8) {
  if (isASCII(utf8)) return true;
  for (std::size_t offset = 0; offset < utf8.size();) {
    if (nextScalar(utf8, offset) < 0) return false;
  }
  return true;
}

std::string Text::repaired(std::string_view utf8) {
  if (isValid(utf8)) return std::string(utf8);
  return fromScalars(scalars(utf8));
}

std::string Text::trimmed(std::string_view text) { return std::string(trimmedPart(text)); }

std::string_view Text::trimmedPart(std::string_view text) {
  std::size_t begin = text.size();
  std::size_t end = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    char32_t scalar = 0;
    const std::size_t next = decode(text, offset, scalar);
    if (!isBlank(scalar)) {
      begin = std::min(begin, offset);
      end = next;
    }
    offset = next;
  }
  return begin < end ? text.substr(begin, end - begin) : std::string_view();
}

std::string Text::lowercased(std::string_view text) {
  if (!isASCII(text)) return utf8(icu::UnicodeString::fromUTF8(piece(text)).toLower(icu::Locale::getRoot()));
  std::string result(text);
  for (char& c : result) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return result;
}

std::string Text::caseFolded(std::string_view text) {
  return isASCII(text) ? lowercased(text) : utf8(icu::UnicodeString::fromUTF8(piece(text)).foldCase());
}

std::string Text::baseLetters(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfkd = icu::Normalizer2::getNFKDInstance(status);
  check(status);
  const icu::UnicodeString apart = nfkd->normalize(icu::UnicodeString::fromUTF8(piece(caseFolded(text))), status);
  check(status);
  std::u32string letters = scalars(utf8(apart));
  std::erase_if(letters, [](char32_t scalar) { return isAccent(scalar) || isInvisible(scalar); });
  std::ranges::transform(letters, letters.begin(), withoutStroke);
  return trimmed(fromScalars(letters));
}

std::string Text::uppercasedASCII(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

std::string Text::composed(std::string_view text) {
  if (isASCII(text)) return std::string(text);
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
  check(status);
  const icu::UnicodeString result = nfc->normalize(icu::UnicodeString::fromUTF8(piece(text)), status);
  check(status);
  return utf8(result);
}

std::string Text::firstCharacters(std::string_view text, std::size_t count) {
  if (text.size() <= count) return std::string(text);
  std::size_t kept = 0;
  std::size_t end = 0;
  forEachCharacterEnd(text, [&](std::size_t characterEnd) {
    if (kept == count) return false;
    end = characterEnd;
    return ++kept < count;
  });
  return std::string(text.substr(0, end));
}

std::string Text::cutToBytes(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return std::string(text);
  std::size_t end = 0;
  forEachCharacterEnd(text, [&](std::size_t characterEnd) {
    if (characterEnd > limit) return false;
    end = characterEnd;
    return true;
  });
  return std::string(text.substr(0, end == 0 ? scalarBoundary(text, limit) : end));
}

std::size_t Text::displayWidth(std::string_view text) {
  std::size_t width = 0;
  for (const char32_t scalar : scalars(text)) {
    constexpr std::uint32_t marks = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK;
    if ((U_GET_GC_MASK(codePoint(scalar)) & marks) != 0) continue;
    const int eastAsian = u_getIntPropertyValue(codePoint(scalar), UCHAR_EAST_ASIAN_WIDTH);
    width += eastAsian == U_EA_FULLWIDTH || eastAsian == U_EA_WIDE ? 2 : 1;
  }
  return width;
}

std::u32string Text::scalars(std::string_view text) {
  std::u32string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    char32_t scalar = 0;
    offset = decode(text, offset, scalar);
    result.push_back(scalar);
  }
  return result;
}

std::string Text::fromScalars(std::u32string_view scalars) {
  std::string result;
  result.reserve(scalars.size());
  for (const char32_t scalar : scalars) appendScalar(result, scalar);
  return result;
}

bool Text::isBlank(char32_t scalar) { return u_isUWhiteSpace(codePoint(scalar)); }

bool Text::isControl(char32_t scalar) { return u_charType(codePoint(scalar)) == U_CONTROL_CHAR; }

bool Text::isDirectionalMark(char32_t scalar) {
  constexpr std::u32string_view marks = U"\u200E\u200F\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069";
  return marks.find(scalar) != std::u32string_view::npos;
}

bool Text::isInvisible(char32_t scalar) {
  return u_hasBinaryProperty(codePoint(scalar), UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0;
}

bool Text::isAlphanumeric(char32_t scalar) {
  return (U_GET_GC_MASK(codePoint(scalar)) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
}

int Text::digitValue(char32_t scalar) { return u_charDigitValue(codePoint(scalar)); }

struct Text::NameOrder::Collator {
  std::unique_ptr<icu::Collator> icu;
};

Text::NameOrder::NameOrder(const std::string& localeIdentifier) : collator_(std::make_unique<Collator>()) {
  const icu::Locale locale = icu::Locale::createCanonical(localeIdentifier.c_str());
  const bool isOrderOfBytes = std::string_view(locale.getVariant()) == "POSIX";
  UErrorCode status = U_ZERO_ERROR;
  collator_->icu.reset(icu::Collator::createInstance(isOrderOfBytes ? icu::Locale::getRoot() : locale, status));
  check(status);
  // Secondary strength tells accents apart and letter case not.
  collator_->icu->setStrength(icu::Collator::SECONDARY);
}

Text::NameOrder::~NameOrder() = default;

int Text::NameOrder::compare(std::string_view a, std::string_view b) const {
  UErrorCode status = U_ZERO_ERROR;
  return collator_->icu->compareUTF8(piece(a), piece(b), status);
}
