#include "TidewellCore/ExportTexts.h"

#include <algorithm>

#include "TidewellCore/ExportTextSources.h"
#include "TidewellCore/Platform/Json.h"
#include "TidewellCore/Platform/Precondition.h"

namespace {

using ExportTexts::Section;
using Table = std::map<std::string, Section, std::less<>>;

Section sectionOf(const Json& json) {
  const auto* texts = json.as<Json::Object>();
  precondition(texts != nullptr, "a section of texts is no object");
  Section section;
  for (const auto& [name, value] : *texts) {
    const auto* text = value.as<std::string>();
    precondition(text != nullptr, "a text has another type");
    section.emplace(name, *text);
  }
  return section;
}

Table tableOf(std::string_view source) {
  const std::optional<Json> json = Json::parse(source);
  const auto* sections = json ? json->as<Json::Object>() : nullptr;
  precondition(sections != nullptr, "a table of texts is no JSON object");
  Table table;
  for (const auto& [name, section] : *sections) table.emplace(name, sectionOf(section));
  return table;
}

const std::map<std::string, Table, std::less<>>& tables() {
  static const auto all = [] {
    std::map<std::string, Table, std::less<>> made;
    for (const auto& [language, json] : ExportTextSources::all()) made.emplace(language, tableOf(json));
    return made;
  }();
  return all;
}

const Table& table(std::string_view language) {
  const auto found = tables().find(language);
  precondition(found != tables().end(), "there are no texts in that language");
  return found->second;
}

template <typename Map>
std::vector<std::string> keys(const Map& map) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : map) keys.push_back(key);
  return keys;
}

}  // namespace

std::vector<std::string> ExportTexts::languages() { return keys(tables()); }

std::vector<std::string> ExportTexts::sectionNames(std::string_view language) { return keys(table(language)); }

const Section& ExportTexts::section(std::string_view language, std::string_view name) {
  const auto found = table(language).find(name);
  precondition(found != table(language).end(), "there is no section of that name");
  return found->second;
}

const std::string& ExportTexts::text(const Section& section, std::string_view name) {
  const auto found = section.find(name);
  precondition(found != section.end(), "there is no text of that name");
  return found->second;
}

std::string ExportTexts::filled(std::string_view text, Values values) {
  std::string result;
  while (!text.empty()) {
    const auto begin = std::min(text.find('{'), text.size());
    const auto end = text.find('}', begin);
    result += text.substr(0, begin);
    if (end == std::string_view::npos) return result.append(text.substr(begin));
    const std::string_view place = text.substr(begin + 1, end - begin - 1);
    const auto* value = std::ranges::find(values, place, &std::pair<std::string_view, std::string_view>::first);
    result += value == values.end() ? text.substr(begin, end + 1 - begin) : value->second;
    text.remove_prefix(end + 1);
  }
  return result;
}
