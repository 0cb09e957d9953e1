#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCLI/PasswordSource.h"
#include "TidewellCLI/SelectionOptions.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Platform/MemoryGuard.h"

namespace {

using HumanText::Alignment;

struct Options {
  std::string backup;
  PasswordSource password;
  SelectionOptions wanted;
  bool json = false;
};

void printTable(const std::vector<HumanText::Column>& columns, const std::vector<HumanText::Row>& rows) {
  for (const std::string& line : HumanText::table(columns, rows)) printLine(line);
}

void printKinds(const ScanResult& result) {
  std::vector<HumanText::Row> rows;
  for (const MediaKind kind : MediaKind::allCases) {
    rows.push_back(
        {std::string(kind.displayName()), std::to_string(result.count({kind})), HumanText::size(result.bytes({kind}))});
  }
  rows.push_back({"Total", std::to_string(result.mediaFileCount), HumanText::size(result.totalBytes)});
  printTable({{"Kind"}, {"Files", Alignment::right}, {"Size", Alignment::right}}, rows);
}

void printChats(const ScanResult& result) {
  std::vector<HumanText::Row> rows;
  for (const ScanChat& chat : result.chats) {
    rows.push_back({HumanText::name(chat.name), std::to_string(chat.messageCount), std::to_string(chat.mediaFileCount),
                    HumanText::size(chat.mediaBytes)});
  }
  printTable({{"Chat"}, {"Messages", Alignment::right}, {"Files", Alignment::right}, {"Size", Alignment::right}}, rows);
}

void print(const ScanResult& result) {
  if (!result.hasChatStorage) printLine("This backup holds no WhatsApp chat database.");
  printKinds(result);
  if (!result.chats.empty()) {
    printLine("");
    printChats(result);
  }
  printLine("");
  printLine(HumanText::counted(result.chatCount, "chat") + " · " +
            HumanText::counted(result.skippedThumbnailCount, "thumbnail") + " left out");
}

void printDiagnostics(const BackupUnlockReport& report) {
  for (const std::string& line : report.diagnosticLines()) printErrorLine(line);
}

int run(const Options& options) {
  const Exporter exporter;
  const std::filesystem::path backup = absolutePath(options.backup);
  const MemoryGuard guard;
  SecretBytes password = options.password.read(exporter.inspect(backup).isEncrypted);
  const auto unlocked = [&](const BackupUnlockReport& report) {
    wipe(password);
    printDiagnostics(report);
  };
  const ScanResult result = exporter.scan({.backup = backup,
                                           .password = passwordText(password),
                                           .selection = options.wanted.selection,
                                           .unlockReport = unlocked},
                                          Interruption::check());
  options.json ? printJson(JsonRecords::json(result)) : print(result);
  printWarnings(result.warnings);
  return result.warnings.empty() ? ExitCode::done : ExitCode::incomplete;
}

}  // namespace

void addScanCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("scan", "Show the chats and media of a backup");
  Arguments::addPath(*command, "BACKUP", options->backup, "The backup's device folder")->required();
  options->wanted.addOptions(*command);
  options->password.addOptions(*command);
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    options->wanted.requireSense();
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
