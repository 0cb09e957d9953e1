#include "TidewellCLI/Output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ranges>

#include "TidewellCLI/HumanText.h"
#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/TidewellError.h"

namespace {

// What cannot be written is remembered by the stream; it never ends the work.
void write(std::FILE* stream, std::string_view text) { std::fwrite(text.data(), 1, text.size(), stream); }

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
  return TidewellError::isCancellation(error) ? ExitCode::interrupted : ExitCode::failed;
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
  const std::filesystem::path given = std::filesystem::absolute(argument);
  // What ".." leads to depends on the links before it, so only the file system can tell.
  const bool leadsUp = std::ranges::find(given, "..") != given.end();
  const std::filesystem::path path = (leadsUp ? std::filesystem::weakly_canonical(given) : given).lexically_normal();
  return path.has_filename() || path == path.root_path() ? path : path.parent_path();
}

void reserveStandardStreams() {
  // The lowest free number is given out, so the streams are filled in their order.
  for (int file = STDIN_FILENO; file <= STDERR_FILENO;) {
    if (::fcntl(file, F_GETFD) >= 0) {
      ++file;
      continue;
    }
    // Opened the wrong way round, so that using it fails as before.
    if (::open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY) != file) return;
  }
}

void printLine(std::string_view line) { write(stdout, std::string(line) + "\n"); }

void printError(std::string_view text) { write(stderr, text); }

void printErrorLine(std::string_view line) { printError(std::string(line) + "\n"); }

void printWarnings(const std::vector<std::string>& warnings) {
  constexpr std::size_t shown = 10;
  for (const std::string& warning : warnings | std::views::take(shown)) printErrorLine(HumanText::safe(warning));
  if (warnings.size() <= shown) return;
  printErrorLine(HumanText::counted(static_cast<std::int64_t>(warnings.size() - shown), "more warning") +
                 "; --json lists all of them.");
}

void printFailures(const std::vector<CopyFailure>& failures) {
  constexpr std::size_t shown = 10;
  for (const CopyFailure& failure : failures | std::views::take(shown)) {
    printLine(fmt::format("{} — {}: {}", HumanText::safe(failure.name), HumanText::safe(failure.chat),
                          CopyFailures::words(failure.reason).sentence));
  }
  if (failures.size() <= shown) return;
  printLine(fmt::format("{} more failed; --json lists all of them.", failures.size() - shown));
}

bool flushOutput() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

void printJson(const Json& json) { printLine(json.write()); }
