#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "TidewellCore/CopyFailure.h"

// What making the pages of an export again came to.
struct RenderSummary {
  std::int64_t chatCount = 0;        // of the library
  std::int64_t transcriptCount = 0;  // transcript files that stand, those for programs too
  std::int64_t failedCount = 0;      // of `failures`
  std::filesystem::path destination;
  std::filesystem::path archiveIndexURL;
  std::vector<CopyFailure> failures;  // pages, in the order they were tried

  bool operator==(const RenderSummary&) const = default;
};
