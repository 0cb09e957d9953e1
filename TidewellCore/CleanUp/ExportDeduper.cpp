#include "TidewellCore/CleanUp/ExportDeduper.h"

#include <algorithm>
#include <iterator>

#include "TidewellCore/Archive/ArchiveRelocation.h"
#include "TidewellCore/CleanUp/FolderMerge.h"
#include "TidewellCore/CleanUp/FolderPairing.h"
#include "TidewellCore/CleanUp/LibraryRelocation.h"
#include "TidewellCore/CleanUp/MergeJournal.h"
#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/ExportDestination.h"
#include "TidewellCore/Destination/ExportLayout.h"
#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Destination/NamingMemory.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportLayout::isMarked;

// Beside an export there may be folders of any kind, so its mark counts first.
fs::path contentRootOf(const fs::path& destination) {
  const fs::path content = destination / FolderNames::content;
  return isMarked(content) && !isMarked(destination) ? content : ExportLayout::resolveContentRoot(destination);
}

FolderPairing::FolderListing listing(const DestinationIndex& index, const std::string& folder) {
  FolderPairing::FolderListing files;
  if (const auto found = index.filesByFolder.find(folder); found != index.filesByFolder.end()) {
    for (const auto& [key, file] : found->second) files.emplace(key, file.size);
  }
  return files;
}

class Run {
 public:
  Run(const fs::path& destination, const CancellationCheck& isCancelled)
      : destination_(destination),
        contentRoot_(contentRootOf(destination)),
        dataFolder_(ExportLayout::viewerDataDirectory(contentRoot_)),
        isCancelled_(isCancelled) {}

  DedupeSummary dryRun() {
    DedupeSummary summary;
    plan(summary);
    return summary;
  }

  DedupeSummary apply() {
    DedupeSummary summary{.dryRun = false};
    const std::vector<FolderMerge> merges = plan(summary);
    MergeJournal journal(contentRoot_);
    for (const FolderMerge& merge : merges) Merger::announce(merge, journal);
    if (journal.isEmpty()) return summary;
    if (!merges.empty()) journal.save();
    try {
      const Merger merger(contentRoot_, journal, isCancelled_);
      for (const FolderMerge& merge : merges) merger.carryOut(merge, summary);
    } catch (...) {
      followAfterFailure(journal);
      throw;
    }
    follow(journal, summary);
    return summary;
  }

 private:
  std::vector<FolderMerge> plan(DedupeSummary& summary) const {
    const FolderPairing::Evidence evidence = gather();
    const DestinationIndex index = DestinationIndex::load(contentRoot_);
    const FolderPairing::Outcome found =
        FolderPairing::find(evidence, [&](const std::string& folder) { return listing(index, folder); });
    summary.skippedAmbiguousCount = found.skippedAmbiguousCount;
    MergePlanner planner(contentRoot_, isCancelled_);
    std::vector<FolderMerge> merges;
    for (const FolderPairing::Pair& pair : found.pairs) {
      if (areOneFolder(pair)) {
        ++summary.skippedAmbiguousCount;
        continue;
      }
      merges.push_back(planner.plan(pair));
      summary.pairs.push_back(merges.back().pair);
      std::ranges::copy(merges.back().warnings, std::back_inserter(summary.warnings));
    }
    return merges;
  }

  FolderPairing::Evidence gather() const {
    FolderPairing::Evidence evidence{.folders = FolderAllocator::existingChatFolders(contentRoot_),
                                     .manifest = FolderManifest::load(destination_),
                                     .archive = ArchiveRelocation::loadChats(dataFolder_)};
    const bool isNamed = std::ranges::any_of(evidence.folders, [](const std::string& folder) {
      return FolderPairing::jidIfLegacyFolder(folder).has_value();
    });
    const bool isRemembered = !evidence.manifest.empty() || NamingMemory::load(contentRoot_);
    if (isNamed || isMarked(contentRoot_) || isRemembered || !evidence.archive.empty()) return evidence;
    throw TidewellError::ioFailure("There is no export in “" + PathText::text(destination_) + "”.");
  }

  // A folder mounted at two places is seen twice, and would be merged into nothing.
  bool areOneFolder(const FolderPairing::Pair& pair) const {
    return fs::equivalent(contentRoot_ / PathText::path(pair.canonicalFolder),
                          contentRoot_ / PathText::path(pair.duplicateFolder));
  }

  void follow(const MergeJournal& journal, DedupeSummary& summary) const {
    const auto newPlaceOfFile = [&](const std::string& place) { return journal.newPlaceOfFile(place); };
    summary.archiveUpdated = ArchiveRelocation::rewrite(
        dataFolder_,
        {.folder = [&](const std::string& place) { return journal.newPlaceOfFolder(place); }, .file = newPlaceOfFile});
    FolderAssignment folders = FolderManifest::load(destination_);
    bool isMoved = false;
    for (auto& [jid, folder] : folders) {
      const auto place = journal.newPlaceOfFolder(folder);
      if (!place) continue;
      folder = *place;
      isMoved = true;
    }
    if (isMoved) FolderManifest::save(contentRoot_, folders);
    if (auto warning = LibraryRelocation::rewrite(contentRoot_, newPlaceOfFile)) {
      summary.warnings.push_back(std::move(*warning));
    }
    journal.remove();
  }

  // What cannot be done now is done by the next run, which finds the journal.
  void followAfterFailure(const MergeJournal& journal) const {
    try {
      DedupeSummary summary;
      follow(journal, summary);
    } catch (const std::exception&) {
    }
  }

  fs::path destination_;
  fs::path contentRoot_;
  fs::path dataFolder_;
  const CancellationCheck& isCancelled_;
};

}  // namespace

DedupeSummary ExportDeduper::run(const fs::path& destination, bool apply, const CancellationCheck& isCancelled) {
  if (!Files::isFolder(destination)) {
    throw TidewellError::ioFailure("There is no folder at “" + PathText::text(destination) + "”.");
  }
  const fs::path meant = ExportDestination::meant(destination);
  const DestinationLock lock(meant);
  Run run(meant, isCancelled);
  return apply ? run.apply() : run.dryRun();
}
