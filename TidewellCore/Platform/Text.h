#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

// Unicode text. Every string of the core is UTF-8; functions that take text
// treat an invalid byte sequence as U+FFFD.
namespace Text {

bool isValid(std::string_view utf8);

// The text with every invalid byte sequence replaced by U+FFFD.
std::string repaired(std::string_view utf8);

// Without white space and line breaks at both ends.
std::string trimmed(std::string_view text);
// The same as a part of `text` itself.
std::string_view trimmedPart(std::string_view text);

// Lower case by the language-neutral rules of Unicode.
std::string lowercased(std::string_view text);
// What texts that differ in letter case alone have in common, by Unicode's full
// folding: "ß" and "SS" are "ss", and a final sigma is one like all.
std::string caseFolded(std::string_view text);

// What names have in common that differ in letter case and accents alone: "São" and "SAO" are "sao". Marks that make
// letters of their own, as the vowels of Hindi, stay; blanks around and invisible characters do not.
std::string baseLetters(std::string_view text);

// The letters a to z in capitals, everything else as it is: how SQL compares identifiers.
std::string uppercasedASCII(std::string_view text);

// Canonical composition (NFC).
std::string composed(std::string_view text);

// At most the first `count` user-perceived characters (grapheme clusters).
std::string firstCharacters(std::string_view text, std::size_t count);

// The longest beginning of whole user-perceived characters that takes at most
// `limit` bytes; when not even the first fits, as many of its scalars as do.
std::string cutToBytes(std::string_view text, std::size_t limit);

// The columns that a text takes on a terminal: two for a wide character, none for a mark.
std::size_t displayWidth(std::string_view text);

std::u32string scalars(std::string_view text);
std::string fromScalars(std::u32string_view scalars);

// White space and line breaks: the Unicode property White_Space.
bool isBlank(char32_t scalar);
// Category Cc only; format characters (Cf) join emoji and are no controls.
bool isControl(char32_t scalar);
// The marks that set the direction of text, and nothing else: they are invisible.
bool isDirectionalMark(char32_t scalar);
// Takes no place of its own on a screen: the Unicode property Default_Ignorable_Code_Point.
bool isInvisible(char32_t scalar);
// The letter, mark and number categories.
bool isAlphanumeric(char32_t scalar);
// The value 0 to 9 of a decimal digit of any script, else -1.
int digitValue(char32_t scalar);

// The order in which a person of a locale expects names, letter case ignored; never that of their bytes.
class NameOrder {
 public:
  explicit NameOrder(const std::string& localeIdentifier);
  ~NameOrder();
  NameOrder(const NameOrder&) = delete;
  NameOrder& operator=(const NameOrder&) = delete;

  // Negative, zero or positive as `a` stands before, with or after `b`.
  int compare(std::string_view a, std::string_view b) const;

 private:
  struct Collator;
  std::unique_ptr<Collator> collator_;
};

}  // namespace Text
