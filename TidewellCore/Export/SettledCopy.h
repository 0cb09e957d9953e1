#pragma once

#include <exception>

#include "TidewellCore/Export/ExportPlanner.h"

// A planned copy that stands in its place, or has failed.
struct SettledCopy {
  const ExportPlanner::PlannedCopy* copy = nullptr;
  ExportPlace place;  // that it was really given, or was about to be given when it failed
  std::exception_ptr failure;
  bool isDoubtful = false;  // its end in the backup is not as that of a whole file
  bool wasThere = false;    // nothing was copied: what stands there already is as good
};
