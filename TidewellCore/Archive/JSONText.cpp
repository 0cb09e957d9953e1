#include "TidewellCore/Archive/JSONText.h"

#include "TidewellCore/Archive/ChatArchiveJSON.h"

namespace {

// What follows `part` in `text`, white space left out.
std::string_view behind(std::string_view part, std::string_view text) {
  const char* end = part.data() + part.size();
  const std::string_view rest = text.substr(static_cast<std::size_t>(end - text.data()));
  const auto first = rest.find_first_not_of(" \t\r\n");
  return first == std::string_view::npos ? std::string_view() : rest.substr(first);
}

}  // namespace

std::string_view JSONText::member(std::string_view object, std::string_view quotedName) {
  if (!object.starts_with('{')) return {};
  for (std::string_view rest = object.substr(1); !rest.empty(); rest.remove_prefix(1)) {
    const std::string_view name = ChatArchiveJSON::extractJSONValue(rest);
    if (name.empty()) return {};
    rest = behind(name, rest);
    if (!rest.starts_with(':')) return {};
    const std::string_view value = ChatArchiveJSON::extractJSONValue(rest.substr(1));
    if (value.empty() || name == quotedName) return value;
    rest = behind(value, rest);
    if (!rest.starts_with(',')) return {};
  }
  return {};
}

void JSONText::forEachElement(std::string_view array, const std::function<void(std::string_view element)>& visit) {
  if (!array.starts_with('[')) return;
  for (std::string_view rest = array.substr(1); !rest.empty(); rest.remove_prefix(1)) {
    const std::string_view element = ChatArchiveJSON::extractJSONValue(rest);
    if (element.empty()) return;
    visit(element);
    rest = behind(element, rest);
    if (!rest.starts_with(',')) return;
  }
}
