#pragma once

#include <vector>

#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/OpenedBackup.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/MediaKind.h"

namespace ExportRequests {

// What is wanted and how it is named.
struct Wish {
  const MediaKinds& kinds;
  const DateFormatter& stamps;
};

// A request for every media file of the wanted kinds, in the file index's
// order. A file without a message is undated, in the chat of its path.
std::vector<ExportPlanner::Request> build(const ManifestStore& manifest, const ChatStorageSnapshot& snapshot,
                                          const OpenedBackup& opened, const Wish& wish);

}  // namespace ExportRequests
