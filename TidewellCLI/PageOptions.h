#pragma once

#include <optional>
#include <string>

#include "TidewellCore/MessageFormat.h"
#include "TidewellCore/Platform/DateText.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

// How pages are written: the options that `export` and `render` share. Each command describes them itself. Must outlive
// the parsing.
struct PageOptions {
  std::optional<TimeZone> timeZone;
  std::optional<Locale> locale;
  MessageFormats formats;

  void addTimeZone(CLI::App& command, const std::string& description);
  void addLocale(CLI::App& command, const std::string& description);
  CLI::Option* addFormats(CLI::App& command);
};
