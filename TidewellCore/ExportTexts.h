#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The texts that people read in an export: of the Chat Archive's page, of the
// transcripts, of what stands in for a message. Each language has a table,
// Texts/LANGUAGE.json, with sections of texts by their names (docs/translating.md).
// A language, section or name that does not exist is an error in the program.
namespace ExportTexts {

using Section = std::map<std::string, std::string, std::less<>>;

// The languages that have a table, in BCP 47.
std::vector<std::string> languages();
// The names of the sections of a language.
std::vector<std::string> sectionNames(std::string_view language);

// The section in a language that has a table.
const Section& section(std::string_view language, std::string_view name);
// A text of a section.
const std::string& text(const Section& section, std::string_view name);

using Values = std::initializer_list<std::pair<std::string_view, std::string_view>>;

// A text with the values in the places of their names: "{actor} left". A value is
// never looked into, and a place without a value stays.
std::string filled(std::string_view text, Values values);

}  // namespace ExportTexts
