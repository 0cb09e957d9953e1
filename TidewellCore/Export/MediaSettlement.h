#pragma once

#include <vector>

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/MediaResult.h"
#include "TidewellCore/Library/MediaLedger.h"

// Tells the ledger which files an export has, once its plan was carried out.
namespace MediaSettlement {

struct Ground {
  const ExportPlan& plan;
  const DestinationIndex& index;  // as it was before the plan was carried out
  const BackupSource& source;
};

// `results` are those of the plan's copies, in their order. The entries of files that moved follow them, and those of
// files that went away say so. What an export that was broken off left of a medium that this one leaves out is held
// against the backup, so that a damaged copy is not taken for a whole one later.
void settle(MediaLedger& ledger, const Ground& ground, const std::vector<MediaResult>& results);

}  // namespace MediaSettlement
