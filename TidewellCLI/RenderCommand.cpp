#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCLI/PageOptions.h"
#include "TidewellCLI/ProgressDisplay.h"
#include "TidewellCore/Export/Rerendering.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

struct Options {
  std::string destination;
  PageOptions pages;
  bool json = false;
};

void print(const RenderSummary& summary) {
  printLine(fmt::format("{} · {} transcripts · {} failed", HumanText::counted(summary.chatCount, "chat"),
                        summary.transcriptCount, summary.failedCount));
  printFailures(summary.failures);
  printLine("To read the chats, open " + PathText::text(summary.archiveIndexURL));
}

int run(const Options& options) {
  ProgressDisplay display(!options.json);
  const RenderSummary summary =
      Rerendering::run({.destination = absolutePath(options.destination),
                        .timeZone = options.pages.timeZone,
                        .locale = options.pages.locale,
                        .formats = options.pages.formats},
                       {.progress = [&](const ExportProgress& progress) { display.show(progress); },
                        .isCancelled = Interruption::check()});
  display.clear();
  options.json ? printJson(JsonRecords::json(summary)) : print(summary);
  return summary.failedCount > 0 ? ExitCode::incomplete : ExitCode::done;
}

}  // namespace

void addRenderCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("render", "Make all pages of an export again from its library, without the backup");
  Arguments::addPath(*command, "DESTINATION", options->destination, "The folder that was exported to")->required();
  options->pages.addFormats(*command);
  options->pages.addTimeZone(
      *command, "The time zone of dates in pages, as \"Europe/Lisbon\" (default: that of the last export)");
  options->pages.addLocale(*command,
                           "The language and region of pages, as \"pt_BR\" (default: those of the last export)");
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
