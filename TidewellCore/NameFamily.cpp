#include "TidewellCore/NameFamily.h"

#include <charconv>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Precondition.h"

namespace {

// In the place of the number; no name holds it.
constexpr const char* number = "/";

int firstOf(int digits) {
  int first = 1;
  while (--digits > 0) first *= 10;
  return first == 1 ? 2 : first;
}

// A number as variants are written, at the end of `stem`; 0 when there is none.
int numberAtEnd(std::string_view stem) {
  const auto dash = stem.rfind('-');
  if (dash == std::string_view::npos) return 0;
  const std::string_view text = stem.substr(dash + 1);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && value >= 2 && !text.starts_with('0') ? value : 0;
}

void addReading(std::string_view stem, std::string_view ending, std::vector<NameFamily::Member>& members) {
  const int value = numberAtEnd(stem);
  if (value == 0) return;
  members.push_back(
      {.family = std::string(stem.substr(0, stem.rfind('-'))).append(number).append(ending), .number = value});
}

}  // namespace

std::string NameFamily::of(std::string_view name, int digits) {
  precondition(digits >= 1 && digits <= mostDigits, "a variant's number has 1 to 10 digits");
  std::string variant = FileNaming::variant(name, firstOf(digits));
  const std::string_view stem = PathText::withoutExtension(name);
  const auto length = static_cast<std::size_t>(digits) + 1;
  const std::size_t ending = length + name.size() - stem.size();
  // A name is cut before its ending, unless the ending alone is too long.
  const std::size_t place = ending < FileNaming::maximumNameBytes ? variant.size() - ending : stem.size();
  if (place + length > variant.size()) return std::string(number).append(name);
  return FileNaming::normalizedKey(variant.replace(place, length, number));
}

bool NameFamily::isOne(std::string_view name) { return name.size() + 1 + mostDigits <= FileNaming::maximumNameBytes; }

std::vector<NameFamily::Member> NameFamily::readings(std::string_view key) {
  std::vector<Member> members;
  const std::string_view stem = PathText::withoutExtension(key);
  addReading(stem, key.substr(stem.size()), members);
  // "a.-2" is the second "a.", which has no extension.
  const bool isAfterDot = key.rfind('-') != std::string_view::npos && key.substr(0, key.rfind('-')).ends_with('.');
  if (isAfterDot && stem.size() != key.size()) addReading(key, {}, members);
  return members;
}
