#include "TidewellCLI/Arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <string_view>

namespace {

constexpr std::string_view neverAPassword =
    "A password is never an argument: leave it out to be asked for it, or use --password-file or --password-stdin.\n";

// The first of them, up to a value that is tied to it.
std::string unexpected(const std::vector<std::string>& arguments) {
  const std::string first = arguments.empty() ? "" : arguments.front();
  return first.starts_with("--") ? first.substr(0, first.find('=')) : "An argument";
}

}  // namespace

CLI::Option* Arguments::addPath(CLI::App& command, const std::string& name, std::string& path,
                                const std::string& description) {
  const auto fault = [](const std::string& given) { return given.empty() ? "may not be empty" : std::string(); };
  return command.add_option(name, path, description)->check(fault, "");
}

std::string Arguments::wrongUsage(const CLI::App* app, const CLI::Error& error) {
  constexpr std::string_view help = "Run with --help for more information.\n";
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    return fmt::format("{} was not expected. {}{}", unexpected(app->remaining_for_passthrough(true)), neverAPassword,
                       help);
  }
  if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) {
    return fmt::format("An option was given a value that it does not take. {}{}", neverAPassword, help);
  }
  return fmt::format("{}\n{}", error.what(), help);
}
