#pragma once

#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Platform/PartialFile.h"

// A copy whose bytes stand beside its place, and that is not on the disk yet.
struct WrittenCopy {
  const ExportPlanner::PlannedCopy* copy = nullptr;  // stays where it is until it is settled
  PartialFile partial;
  bool isDoubtful = false;  // its end is not as that of a whole file
};
