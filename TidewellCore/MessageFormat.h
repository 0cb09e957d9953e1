#pragma once

#include <array>
#include <set>
#include <string_view>
#include <utility>

#include "TidewellCore/Platform/RawValue.h"

// A form in which a chat's messages are written for other programs (docs/formats/message-files.md).
enum class MessageFormat { json, csv };

// What the command line calls them.
constexpr std::array<std::pair<MessageFormat, std::string_view>, 2> rawValueTable(MessageFormat) {
  return {{{MessageFormat::json, "json"}, {MessageFormat::csv, "csv"}}};
}

using MessageFormats = std::set<MessageFormat>;
