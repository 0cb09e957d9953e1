#pragma once

#include <string>
#include <string_view>

// How names are written in a destination.
enum class NameForm {
  plain,     // as people and phones call things: "Pizza?"
  portable,  // as FAT, exFAT and Windows take it too: "Pizza-"
};

// Operations on whole names, as FileNaming makes them.
namespace PortableNames {

// What those file systems refuse becomes "-": the characters ?*"<>|:\, controls and code points that are no
// characters. Blanks and dots at the end go. A name that Windows keeps for a device ("con", "nul.txt") gets a "-".
// Never empty; a portable name stays as it is, and so do its variants.
std::string portable(std::string_view name);

// The name in that form.
std::string inForm(std::string_view name, NameForm form);

}  // namespace PortableNames
