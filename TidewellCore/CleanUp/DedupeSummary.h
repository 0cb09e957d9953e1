#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A chat folder that duplicates another one of the same destination.
struct DedupePair {
  std::string canonicalFolder;  // is kept
  std::string duplicateFolder;
  std::optional<std::string> jid;  // the chat of both, when it is known
  std::int64_t duplicateFileCount = 0;
  std::int64_t uniqueFileCount = 0;
  std::int64_t bytes = 0;  // what removing the duplicate files frees

  bool operator==(const DedupePair&) const = default;
};

// What a clean-up of duplicate folders found or did.
struct DedupeSummary {
  bool dryRun = true;  // only reported, nothing changed
  std::vector<DedupePair> pairs;
  std::int64_t skippedAmbiguousCount = 0;
  std::int64_t deletedDuplicateCount = 0;
  std::int64_t movedUniqueCount = 0;
  std::int64_t removedFolderCount = 0;
  std::int64_t bytesReclaimed = 0;
  bool archiveUpdated = false;
  // Of files that could not be compared, and were left where they are, and of a library that could not follow:
  // sentences for people, in English.
  std::vector<std::string> warnings;

  std::int64_t mergedFolderCount() const { return static_cast<std::int64_t>(pairs.size()); }

  bool operator==(const DedupeSummary&) const = default;
};
