#include "TidewellCLI/PageOptions.h"

#include <CLI/CLI.hpp>

namespace {

MessageFormats parseFormats(const std::string& list) {
  MessageFormats formats;
  for (const std::string& name : CLI::detail::split(list, ',')) {
    const auto format = fromRawValue<MessageFormat>(name);
    if (!format) throw CLI::ValidationError("--formats", "unknown format \"" + name + "\"");
    formats.insert(*format);
  }
  return formats;
}

TimeZone parseTimeZone(const std::string& identifier) {
  if (const auto timeZone = TimeZone::named(identifier)) return *timeZone;
  throw CLI::ValidationError("--time-zone", "unknown time zone \"" + identifier + "\"");
}

Locale parseLocale(const std::string& identifier) {
  if (const auto locale = Locale::named(identifier)) return *locale;
  throw CLI::ValidationError("--locale", "unknown locale \"" + identifier + "\"");
}

}  // namespace

void PageOptions::addTimeZone(CLI::App& command, const std::string& description) {
  command.add_option_function<std::string>(
      "--time-zone", [this](const std::string& id) { timeZone = parseTimeZone(id); }, description);
}

void PageOptions::addLocale(CLI::App& command, const std::string& description) {
  command.add_option_function<std::string>(
      "--locale", [this](const std::string& id) { locale = parseLocale(id); }, description);
}

CLI::Option* PageOptions::addFormats(CLI::App& command) {
  return command.add_option_function<std::string>(
      "--formats", [this](const std::string& list) { formats = parseFormats(list); },
      "Write each chat's messages for other programs, too, in formats separated by commas: json, csv");
}
