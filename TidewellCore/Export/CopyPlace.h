#pragma once

#include <filesystem>

#include "TidewellCore/Export/SettledCopy.h"

// Where a whole file gets the name that the plan gave it.
namespace CopyPlace {

// Moves a file to `copy`'s place. The plan gives no name that is taken: what
// stands there came since, or has another name to us and the same to the drive.
// It is kept, and the copy gets the next free variant of its name. A link makes
// room instead, and an empty file, which is what a power cut leaves, is replaced.
// When a file of the very same content stands there, which is as good, `file`
// stays where it is. Throws nothing: CopyError for anything else in the way, and
// std::filesystem::filesystem_error, are told as the copy's failure.
SettledCopy give(const ExportPlanner::PlannedCopy& copy, const std::filesystem::path& contentRoot,
                 const std::filesystem::path& file);

}  // namespace CopyPlace
