#include "TidewellCore/ExportProgress.h"

double ExportProgress::fraction() const {
  return total < 1 ? 0.0 : static_cast<double>(completed) / static_cast<double>(total);
}

bool ExportProgress::isIndeterminate() const {
  return phase == Phase::preparing || phase == Phase::unlocking || phase == Phase::readingChats;
}
