#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCLI/ProgressDisplay.h"
#include "TidewellCore/Export/Verification.h"

namespace {

struct Options {
  std::string destination;
  bool json = false;
};

void print(const VerifySummary& summary) {
  for (const VerifySummary::Finding& finding : summary.findings) printLine(HumanText::safe(finding.message));
  if (!summary.findings.empty()) printLine("");
  const std::string seen =
      fmt::format("{} · {} · {} verified", HumanText::counted(summary.mediaCount, "media file"),
                  HumanText::counted(summary.chatCount, "chat"), HumanText::counted(summary.messageCount, "message"));
  printLine(fmt::format(
      "{} · {}", seen,
      summary.findings.empty() ? "nothing is wrong" : HumanText::counted(std::ssize(summary.findings), "problem")));
}

int run(const Options& options) {
  ProgressDisplay display(!options.json);
  const VerifySummary summary = Verification::run(
      absolutePath(options.destination), {.progress = [&](const ExportProgress& progress) { display.show(progress); },
                                          .isCancelled = Interruption::check()});
  display.clear();
  options.json ? printJson(JsonRecords::json(summary)) : print(summary);
  return summary.findings.empty() ? ExitCode::done : ExitCode::wrong;
}

}  // namespace

void addVerifyCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("verify", "Look whether an export is whole and as it was written");
  Arguments::addPath(*command, "DESTINATION", options->destination, "The folder that was exported to")->required();
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
