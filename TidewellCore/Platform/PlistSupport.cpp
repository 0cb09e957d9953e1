#include "TidewellCore/Platform/PlistSupport.h"

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/TidewellError.h"

namespace {

// Real ones stay below a few megabytes, icons of all apps included.
constexpr std::int64_t largestFile = 256 << 20;

bool isYes(const std::string& text) {
  const std::string lower = Text::lowercased(text);
  return lower == "1" || lower == "true" || lower == "yes";
}

}  // namespace

PropertyListDictionary PlistSupport::dictionary(const std::filesystem::path& file) {
  const PropertyList root = parsePropertyList(Files::read(file, largestFile));
  if (const auto* dictionary = root.as<PropertyListDictionary>()) return *dictionary;
  throw TidewellError::ioFailure("“" + PathText::text(file.filename()) + "” is not a dictionary plist.");
}

std::optional<std::string> PlistSupport::string(const PropertyList* value) {
  const auto* text = value == nullptr ? nullptr : value->as<std::string>();
  return text == nullptr || text->empty() ? std::nullopt : std::optional(*text);
}

bool PlistSupport::boolean(const PropertyList* value) {
  if (value == nullptr) return false;
  if (const auto* flag = value->as<bool>()) return *flag;
  if (const auto* integer = value->as<std::int64_t>()) return *integer != 0;
  if (const auto* large = value->as<std::uint64_t>()) return *large != 0;
  if (const auto* real = value->as<double>()) return *real != 0;
  const auto* text = value->as<std::string>();
  return text != nullptr && isYes(*text);
}

std::optional<Date> PlistSupport::date(const PropertyList* value) {
  const auto* date = value == nullptr ? nullptr : value->as<Date>();
  return date == nullptr ? std::nullopt : std::optional(*date);
}

const Bytes* PlistSupport::data(const PropertyList* value) { return value == nullptr ? nullptr : value->as<Bytes>(); }
