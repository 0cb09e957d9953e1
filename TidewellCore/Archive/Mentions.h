#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// People named in a text: WhatsApp stores "@" and the digits of a JID, and shows a name.
namespace Mentions {

// Digits → name.
using Names = std::map<std::string, std::string>;
// The name of the person whose JID has these digits; absent for nobody known.
using Lookup = std::function<std::optional<std::string>(std::string_view digits)>;

// The people whom the text names.
Names in(std::string_view text, const Lookup& nameOf);

// The text with those names in the digits' places.
std::string named(std::string_view text, const Names& names);

}  // namespace Mentions
