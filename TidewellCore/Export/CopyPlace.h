#pragma once

#include <filesystem>

#include "TidewellCore/Export/ExportPlanner.h"

// Where a whole file gets the name that the plan gave it.
namespace CopyPlace {

// Moves a file to `copy`'s place. The plan gives no name that is taken: what
// stands there came since, or has another name to us and the same to the drive.
// It is kept, and `copy` gets the next free variant of its name. A link makes
// room instead, and an empty file, which is what a power cut leaves, is replaced.
// False when a file of the very same content stands there, which is as good;
// `file` stays where it is then. Throws CopyError for anything else in the way,
// and std::filesystem::filesystem_error.
bool give(ExportPlanner::PlannedCopy& copy, const std::filesystem::path& file);

}  // namespace CopyPlace
