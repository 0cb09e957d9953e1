#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

struct Options {
  std::string root = PathText::text(DefaultPaths::mobileSyncBackup());
  bool sizes = false;
  bool json = false;
};

HumanText::Row row(const DiscoveredBackup& backup, bool withSizes) {
  const BackupInfo& info = backup.info;
  HumanText::Row cells{HumanText::name(info.deviceName.value_or("iPhone")),
                       HumanText::safe(info.iosVersion.value_or("unknown")), HumanText::date(info.backupDate),
                       info.isEncrypted ? "yes" : "no"};
  if (withSizes) cells.push_back(HumanText::size(backup.byteCount.value_or(0)));
  cells.push_back(HumanText::safe(PathText::text(info.url)));
  return cells;
}

void print(const BackupLibrarySnapshot& snapshot, const Options& options) {
  if (snapshot.access == BackupAccess::missing) return printLine("There is no backup folder at " + options.root + ".");
  if (snapshot.access == BackupAccess::denied) return printLine("This program may not read " + options.root + ".");
  if (snapshot.backups.empty()) return printLine("There are no backups in " + options.root + ".");
  std::vector<HumanText::Column> columns{{"Device"}, {"iOS"}, {"Date"}, {"Encrypted"}};
  if (options.sizes) columns.push_back({"Size", HumanText::Alignment::right});
  columns.push_back({"Folder"});
  std::vector<HumanText::Row> rows;
  for (const DiscoveredBackup& backup : snapshot.backups) rows.push_back(row(backup, options.sizes));
  for (const std::string& line : HumanText::table(columns, rows)) printLine(line);
}

void printUnreadable(const BackupLibrarySnapshot& snapshot) {
  for (const UnreadableFolder& folder : snapshot.unreadable) {
    printErrorLine(fmt::format("“{}” is no backup that can be read: {}", HumanText::safe(folder.name),
                               HumanText::safe(folder.reason)));
  }
}

int run(const Options& options) {
  BackupLibrarySnapshot snapshot = BackupLibrary::diagnose(absolutePath(options.root));
  if (options.sizes) {
    for (DiscoveredBackup& backup : snapshot.backups) {
      backup.byteCount = BackupLibrary::folderByteCount(backup.info.url);
    }
  }
  options.json ? printJson(JsonRecords::json(snapshot)) : print(snapshot, options);
  printUnreadable(snapshot);
  return ExitCode::done;
}

}  // namespace

void addListCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("list", "List the backups of this computer, newest first");
  Arguments::addPath(*command, "--root", options->root, "The folder that holds the backups")->capture_default_str();
  command->add_flag("--sizes", options->sizes, "Measure the size of each backup, too");
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
