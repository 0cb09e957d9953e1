#include "Tests/Drives/DriveNames.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace Fixture {
namespace {

constexpr int longestName = 255;  // units of UTF-16

icu::UnicodeString unitsOf(std::string_view name) {
  return icu::UnicodeString::fromUTF8({name.data(), static_cast<int>(name.size())});
}

bool isValid(const icu::UnicodeString& units, std::string_view name) {
  std::string back;
  units.toUTF8String(back);
  return back == name;
}

bool isForbidden(char c) {
  return static_cast<unsigned char>(c) < 0x20 || std::string_view("*?<>|\":\\").find(c) != std::string_view::npos;
}

}  // namespace

std::optional<std::string> DriveNames::stored(std::string_view name, const DriveOptions& options) {
  if (options.takesEveryName) return std::string(name);
  if (options.stripsDots) name = name.substr(0, name.find_last_not_of('.') + 1);
  if (name.empty() || name.ends_with('.') || name.ends_with(' ')) return std::nullopt;
  if (std::ranges::any_of(name, isForbidden)) return std::nullopt;
  const icu::UnicodeString units = unitsOf(name);
  if (!isValid(units, name) || units.length() > longestName) return std::nullopt;
  return std::string(name);
}

std::string DriveNames::key(std::string_view name, const DriveOptions& options) {
  if (options.stripsDots) name = name.substr(0, name.find_last_not_of('.') + 1);
  icu::UnicodeString units = unitsOf(name);
  if (!isValid(units, name)) return std::string(name);
  UErrorCode status = U_ZERO_ERROR;
  if (options.ignoresWidth) units = icu::Normalizer2::getNFKCInstance(status)->normalize(units, status);
  if (options.ignoresCase) units.foldCase();
  if (options.composesNames) units = icu::Normalizer2::getNFCInstance(status)->normalize(units, status);
  std::string key;
  units.toUTF8String(key);
  return key;
}

}  // namespace Fixture
