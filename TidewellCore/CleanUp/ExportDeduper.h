#pragma once

#include <filesystem>

#include "TidewellCore/CleanUp/DedupeSummary.h"
#include "TidewellCore/Platform/Cancellation.h"

// Brings together what earlier exports left of one chat in two folders of a
// destination (FolderPairing says which).
namespace ExportDeduper {

// Without `apply` nothing is changed, and the pairs are those that applying
// would merge. With it, each duplicate folder goes into its canonical one:
// exact duplicates are removed, all else is moved, and the archive, the
// folder manifest and the library follow. What is interrupted is completed by the next run.
//
// Throws TidewellError::ioFailure when there is no export or another run works
// on it, TidewellError::cancelled, and what the file system reports; what was
// merged before stays so.
DedupeSummary run(const std::filesystem::path& destination, bool apply, const CancellationCheck& isCancelled = {});

}  // namespace ExportDeduper
