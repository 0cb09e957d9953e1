#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TidewellCore/ChatData/Scope.h"
#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/MediaKind.h"

namespace ExportRequests {

// What is wanted.
struct Wish {
  const MediaKinds& kinds;
  const Scope& scope;
};

struct Requests {
  std::vector<ExportPlanner::Request> wanted;
  std::vector<ExportPlanner::Request> leftOut;  // every other file
};
// A request for every media file that is of a wanted kind and in the scope, and for
// every other one when those are asked for, in the file index's order. A file without a
// message is undated, in the chat of its path. Throws TidewellError::cancelled.
Requests build(const BackupSource& source, const Wish& wish, bool isLeftOutAskedFor,
               const CancellationCheck& isCancelled = {});

// A sentence about those, and those of the profile pictures, that may have lost
// their ends; absent when there are none.
std::optional<std::string> warningOfShortFiles(const std::vector<ExportPlanner::Request>& requests,
                                               const ExportPlanner::Naming& naming,
                                               std::span<const ManifestFile> pictures, const OpenedBackup& opened);

// A request, which nothing can carry out, for every medium that a message names
// and whose file is in none of `found` whole; in the order of their paths.
std::vector<ExportPlanner::Request> lost(const ChatStorageSnapshot& snapshot,
                                         const std::vector<const std::vector<ExportPlanner::Request>*>& found);

}  // namespace ExportRequests
