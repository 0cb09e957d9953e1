#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/CopyFailure.h"

// What a finished export did.
struct ExportSummary {
  std::int64_t copiedCount = 0;
  std::int64_t skippedExistingCount = 0;  // already in the destination with the same name and size
  std::int64_t transcriptCount = 0;       // transcript files written, those for programs too
  std::int64_t failedCount = 0;           // of `failures`
  std::int64_t totalBytesCopied = 0;
  std::filesystem::path destination;
  std::int64_t chatFolderCount = 0;
  std::optional<std::filesystem::path> archiveIndexURL;  // absent when no archive was written
  std::int64_t unresolvedArchiveLinkCount = 0;           // archive messages whose media file is not in the export
  std::vector<CopyFailure> failures;                     // files, pictures and pages, in the order they were tried
  std::vector<std::string> warnings;                     // sentences for people, in English
  bool mayBeIncomplete = false;                          // one of the warnings tells of something that may be missing

  bool operator==(const ExportSummary&) const = default;
};
