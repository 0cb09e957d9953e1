#pragma once

#include <filesystem>

#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/Export/ExportPlanner.h"

// What a planned copy is a copy of.
namespace CopySource {

StoredFile storedFile(const ExportPlanner::PlannedCopy& copy);

// How the end of a file that an earlier export left compares with that of its medium. A damaged copy is as long as a
// sound one, so that nothing else tells them apart.
enum class Likeness {
  same,
  other,     // the medium is whole, the file is not as it
  notWhole,  // the medium itself does not end as a whole one
  untold     // nothing was known against the file, and a plain backup has nothing to tell; or the medium cannot be read
};

// Throws what reading the file reports.
Likeness compareEnds(const ExportPlanner::PlannedCopy& copy, const std::filesystem::path& file,
                     const OpenedBackup& opened);

}  // namespace CopySource
