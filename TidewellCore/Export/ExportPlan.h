#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Export/DestinationIndex.h"
#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Export/FolderManifest.h"

// All that an export is going to do, decided before the first byte is copied.
struct ExportPlan {
  FolderAssignment folders;              // one for each chat of this export
  FolderAssignment remembered;           // these, and those of chats that only earlier exports had
  FolderAssignment rememberedMeanwhile;  // and the former folders, until all has moved out of them
  ExportPlanner::LeftoverFolders leftovers;
  ExportPlanner::LeftoverFolders removable;        // of the leftovers, those that are no other chat's
  std::vector<ExportPlanner::PlannedCopy> copies;  // in the order of the requests
  DestinationIndex index;

  static ExportPlan make(const std::vector<ExportPlanner::Request>& requests, const ChatStorageSnapshot& snapshot,
                         const std::filesystem::path& destination, const std::filesystem::path& contentRoot);

  // The bytes that the copies still take on the destination's volume.
  std::int64_t bytesToCopy() const;
};
