#include "TidewellCore/ExportProgress.h"

double ExportProgress::fraction() const {
  return total < 1 ? 0.0 : static_cast<double>(completed) / static_cast<double>(total);
}

bool ExportProgress::isIndeterminate() const {
  return phase == Phase::preparing || phase == Phase::unlocking || phase == Phase::readingChats;
}

std::string_view ExportProgress::title(Phase phase) {
  switch (phase) {
    case Phase::preparing:
      return "Preparing…";
    case Phase::unlocking:
      return "Unlocking backup…";
    case Phase::readingChats:
      return "Reading chats…";
    case Phase::copyingMedia:
      return "Copying media";
    case Phase::writingTranscripts:
      return "Writing transcripts";
    case Phase::verifying:
      return "Verifying";
    case Phase::finished:
      return "Finished";
  }
  return {};
}
