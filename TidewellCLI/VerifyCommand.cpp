#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCLI/PasswordSource.h"
#include "TidewellCLI/ProgressDisplay.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/Platform/MemoryGuard.h"

namespace {

struct Options {
  std::string destination;
  std::string backup;  // empty where none is compared
  PasswordSource password;
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

VerifySummary verify(VerifyJob job, ProgressDisplay& display) {
  return Verification::run(job, {.progress = [&](const ExportProgress& progress) { display.show(progress); },
                                 .isCancelled = Interruption::check()});
}

VerifySummary verifyWithBackup(const Options& options, VerifyJob job, ProgressDisplay& display) {
  job.backup = absolutePath(options.backup);
  const MemoryGuard guard;
  SecretBytes password = options.password.read(Exporter().inspect(*job.backup).isEncrypted);
  job.password = passwordText(password);
  job.unlockReport = [&](const BackupUnlockReport&) { wipe(password); };
  return verify(std::move(job), display);
}

int exitCodeOf(const VerifySummary& summary) {
  if (!summary.findings.empty()) return ExitCode::wrong;
  return summary.warnings.empty() ? ExitCode::done : ExitCode::incomplete;
}

int run(const Options& options) {
  ProgressDisplay display(!options.json);
  VerifyJob job{.destination = absolutePath(options.destination)};
  const VerifySummary summary =
      options.backup.empty() ? verify(std::move(job), display) : verifyWithBackup(options, std::move(job), display);
  display.clear();
  options.json ? printJson(JsonRecords::json(summary)) : print(summary);
  printWarnings(summary.warnings);
  return exitCodeOf(summary);
}

}  // namespace

void addVerifyCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("verify", "Look whether an export is whole and as it was written");
  Arguments::addPath(*command, "DESTINATION", options->destination, "The folder that was exported to")->required();
  Arguments::addPath(*command, "--backup", options->backup,
                     "Also look whether all messages and media of this backup are in the export");
  options->password.addOptions(*command);
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
