#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Commands.h"
#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/JsonRecords.h"
#include "TidewellCLI/Output.h"
#include "TidewellCore/Export/Exporter.h"

namespace {

struct Options {
  std::string destination;
  bool apply = false;
  bool json = false;
};

void printPairs(const std::vector<DedupePair>& pairs) {
  const std::vector<HumanText::Column> columns{{"Duplicate"},
                                               {"Merged into"},
                                               {"Duplicate files", HumanText::Alignment::right},
                                               {"Other files", HumanText::Alignment::right},
                                               {"Size", HumanText::Alignment::right}};
  std::vector<HumanText::Row> rows;
  for (const DedupePair& pair : pairs) {
    rows.push_back({HumanText::name(pair.duplicateFolder), HumanText::name(pair.canonicalFolder),
                    std::to_string(pair.duplicateFileCount), std::to_string(pair.uniqueFileCount),
                    HumanText::size(pair.bytes)});
  }
  for (const std::string& line : HumanText::table(columns, rows)) printLine(line);
}

void printReport(const DedupeSummary& summary) {
  std::int64_t bytes = 0;
  for (const DedupePair& pair : summary.pairs) bytes += pair.bytes;
  printLine(fmt::format("{} can be merged, freeing {}. Nothing was changed; --apply merges them.",
                        HumanText::counted(summary.mergedFolderCount(), "duplicate folder"), HumanText::size(bytes)));
}

void printResult(const DedupeSummary& summary) {
  printLine(fmt::format("{} merged · {} removed · {} moved · {} removed · {} freed",
                        HumanText::counted(summary.mergedFolderCount(), "duplicate folder"),
                        HumanText::counted(summary.deletedDuplicateCount, "duplicate file"),
                        HumanText::counted(summary.movedUniqueCount, "other file"),
                        HumanText::counted(summary.removedFolderCount, "folder"),
                        HumanText::size(summary.bytesReclaimed)));
  if (summary.archiveUpdated) printLine("The Chat Archive now points at the merged folders.");
}

void print(const DedupeSummary& summary) {
  if (summary.pairs.empty()) {
    printLine("There are no duplicate folders to merge.");
    if (summary.archiveUpdated) printLine("The Chat Archive now points at the folders merged earlier.");
  } else {
    printPairs(summary.pairs);
    summary.dryRun ? printReport(summary) : printResult(summary);
  }
  if (summary.skippedAmbiguousCount > 0) {
    printLine(HumanText::counted(summary.skippedAmbiguousCount, "folder") +
              " left alone: which chat each belongs to is not certain.");
  }
}

int run(const Options& options) {
  const DedupeSummary summary =
      Exporter().dedupe(absolutePath(options.destination), options.apply, Interruption::check());
  options.json ? printJson(JsonRecords::json(summary)) : print(summary);
  printWarnings(summary.warnings);
  return summary.warnings.empty() ? ExitCode::done : ExitCode::incomplete;
}

}  // namespace

void addDedupeCommand(CLI::App& app, int& exitCode) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("dedupe", "Find the chat folders that an export holds twice, and merge them");
  Arguments::addPath(*command, "DESTINATION", options->destination, "The folder that was exported to")->required();
  command->add_flag("--apply", options->apply, "Merge them; without it nothing is changed");
  command->add_flag("--json", options->json, "Print one JSON object");
  command->callback([options, &exitCode] {
    exitCode = runReporting(options->json ? Format::json : Format::human, [&] { return run(*options); });
  });
}
