#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCLI/PageOptions.h"
#include "TidewellCLI/PasswordSource.h"
#include "TidewellCLI/ProgressDisplay.h"
#include "TidewellCLI/SelectionOptions.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Platform/MemoryGuard.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

struct Options {
  std::string backup;
  std::string destination;
  ExportOptions wanted = ExportOptions::defaultOptions();
  SelectionOptions part;
  PasswordSource password;
  PageOptions pages;
  bool noTranscripts = false;
  bool isSamePerson = false;
  bool noProgress = false;
  bool json = false;
};

MediaKinds parseKinds(const std::string& list) {
  MediaKinds kinds;
  for (const std::string& name : CLI::detail::split(list, ',')) {
    const auto kind = MediaKind::fromRawValue(name);
    if (!kind) throw CLI::ValidationError("--kinds", "unknown kind \"" + name + "\"");
    kinds.insert(*kind);
  }
  return kinds;
}

void print(const ExportSummary& summary) {
  printLine("Export finished");
  printLine("Saved to " + PathText::text(summary.destination));
  std::string counts = fmt::format("{} copied · {} already present · {} transcripts · {} failed", summary.copiedCount,
                                   summary.skippedExistingCount, summary.transcriptCount, summary.failedCount);
  if (summary.unresolvedArchiveLinkCount > 0) {
    counts += fmt::format(" · {} archive links missing files", summary.unresolvedArchiveLinkCount);
  }
  printLine(counts);
  printFailures(summary.failures);
  if (summary.archiveIndexURL) printLine("To read the chats, open " + PathText::text(*summary.archiveIndexURL));
}

ExportSummary exportBackup(const Options& options) {
  const Locale locale = options.pages.locale.value_or(Locale::current());
  const Exporter exporter{.timeZone = options.pages.timeZone.value_or(TimeZone::current()),
                          .locale = locale,
                          .transcriptStyle = TranscriptStyle::matching(locale),
                          .isTimeZoneChosen = options.pages.timeZone.has_value(),
                          .isLocaleChosen = options.pages.locale.has_value()};
  const std::filesystem::path backup = absolutePath(options.backup);
  const MemoryGuard guard;
  SecretBytes password = options.password.read(exporter.inspect(backup).isEncrypted);
  ProgressDisplay display(!options.noProgress);
  return exporter.exportBackup({.backup = backup,
                                .destination = absolutePath(options.destination),
                                .options = options.wanted,
                                .selection = options.part.selection,
                                .password = passwordText(password),
                                .unlockReport = [&](const BackupUnlockReport&) { wipe(password); },
                                .isSamePerson = options.isSamePerson},
                               {.progress = [&](const ExportProgress& progress) { display.show(progress); },
                                .isCancelled = Interruption::check(),
                                .warned =
                                    [&](const std::string& warning) {
                                      display.clear();
                                      printErrorLine(HumanText::safe(warning));
                                    }});
}

int run(const Options& options) {
  const ExportSummary summary = exportBackup(options);
  options.json ? printJson(JsonRecords::json(summary)) : print(summary);
  return summary.failedCount > 0 || summary.mayBeIncomplete ? ExitCode::incomplete : ExitCode::done;
}

}  // namespace

void addExportCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("export", "Save a backup's chats and media, one folder per chat");
  Arguments::addPath(*command, "BACKUP", options->backup, "The backup's device folder")->required();
  Arguments::addPath(*command, "DESTINATION", options->destination, "Where to save; made when it is missing")
      ->required();
  command->add_option_function<std::string>(
      "--kinds", [options](const std::string& list) { options->wanted.includedKinds = parseKinds(list); },
      "The kinds to copy, separated by commas: photos, videos, voiceNotes, stickers, documents");
  options->part.addOptions(*command);
  CLI::Option* noTranscripts =
      command->add_flag("--no-transcripts", options->noTranscripts, "Write no transcripts and no archive page");
  options->pages.addFormats(*command)->excludes(noTranscripts);
  options->password.addOptions(*command);
  options->pages.addTimeZone(
      *command,
      "The time zone of --since and --until (default: the system's) and of dates in file names, as \"Europe/Lisbon\" "
      "(default: the earlier export's, else the system's)");
  options->pages.addLocale(*command,
                           "The language and region of what is written, as \"pt_BR\" (default: the system's)");
  command->add_flag("--same-person", options->isSamePerson,
                    "The archive belongs to the same person under another number");
  command->add_flag("--no-progress", options->noProgress, "Show no progress");
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    options->part.requireSense();
    options->wanted.formats = options->pages.formats;
    options->wanted.exportTranscripts = !options->noTranscripts;
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
