#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Export/PlannedChat.h"

// All that an export is going to do, decided before the first byte is copied.
struct ExportPlan {
  std::vector<PlannedChat> chats;                   // of this export, and those that only earlier ones had
  std::vector<ExportPlanner::PlannedCopy> copies;   // in the order of the requests
  std::vector<ExportPlanner::PlannedCopy> earlier;  // what an earlier export copied and this one cannot or is not to
  std::vector<std::string> warnings;                // of what may be missing: sentences for people, in English

  // What is to be exported.
  struct Wish {
    std::vector<ExportPlanner::Request> requests;
    std::vector<ExportPlanner::Request> leftOut;  // of what is not wanted
    std::vector<ExportPlanner::Request> lost;     // which the backup no longer holds
    std::vector<CanonicalJID> jidsOfTranscripts;  // chats that get a folder even without media
    std::vector<CanonicalJID> jidsLeftOut;        // chats with messages of which none is wanted
    // Asked about what is not known, and about what is left out of chats that nothing is taken of: a name is costly
    // to make.
    ExportPlanner::Naming naming;
  };
  // What stands at the destination before.
  struct Found {
    const DestinationIndex& index;
    const FolderAssignment& remembered;
    const KnownMedia& known;
  };
  // Throws TidewellError::cancelled.
  static ExportPlan make(Wish wish, const Found& found, const ChatStorageSnapshot& snapshot,
                         const CancellationCheck& isCancelled = {});

  // The bytes that the copies still take on the destination's volume.
  std::int64_t bytesToCopy() const;
};
