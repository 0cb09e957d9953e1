#include "TidewellCLI/Output.h"

#include <fmt/core.h>

#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/TidewellError.h"

namespace {

void reportAsJson(const ErrorReport& report) {
  Json::Object error{{"case", report.caseName}, {"errorDescription", report.errorDescription}};
  if (report.recoverySuggestion) error.emplace("recoverySuggestion", *report.recoverySuggestion);
  printJson(Json(Json::Object{{"error", std::move(error)}}));
}

void reportAsText(const ErrorReport& report) {
  printErrorLine(report.errorDescription);
  if (!report.recoverySuggestion) return;
  printErrorLine("");
  printErrorLine(*report.recoverySuggestion);
}

int exitCodeOf(const std::exception& error) {
  const auto* known = dynamic_cast<const TidewellError*>(&error);
  return known != nullptr && known->is<TidewellError::Cancelled>() ? ExitCode::interrupted : ExitCode::failed;
}

}  // namespace

int runReporting(Format format, const std::function<int()>& work) {
  try {
    return work();
  } catch (const std::exception& error) {
    const ErrorReport report = ErrorReport::of(error);
    format == Format::json ? reportAsJson(report) : reportAsText(report);
    return exitCodeOf(error);
  }
}

std::filesystem::path absolutePath(const std::string& argument) {
  const std::filesystem::path path = std::filesystem::absolute(argument).lexically_normal();
  return path.has_filename() || path == path.root_path() ? path : path.parent_path();
}

void printLine(std::string_view line) { fmt::print("{}\n", line); }

void printErrorLine(std::string_view line) { fmt::print(stderr, "{}\n", line); }

void printJson(const Json& json) { printLine(json.write()); }
