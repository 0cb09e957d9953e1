#pragma once

#include <filesystem>

#include "TidewellCore/UsedNames.h"

// Moving without losing anything. Failures are what the file system reports.
namespace MergeMove {

// Moves a file or folder to `to`, merging folders. Of a file that stands on
// both sides with other bytes both are kept, the moved one under a free name;
// with the same bytes the one to be moved is removed.
void move(const std::filesystem::path& from, const std::filesystem::path& to);

// All names in a folder.
UsedNames usedNames(const std::filesystem::path& folder);

}  // namespace MergeMove
