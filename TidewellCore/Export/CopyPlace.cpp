#include "TidewellCore/Export/CopyPlace.h"

#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

// Whether the place is free now.
bool makeFree(const fs::path& place) {
  const Files::Kind kind = Files::kindOf(place);
  if (kind == Files::Kind::nothing) return true;
  if (kind == Files::Kind::link) {
    MakeRoom::at(place);
    return true;
  }
  if (kind != Files::Kind::file) throw CopyError(FailureReason::placeTaken);
  return Files::regularFileSize(place) == 0 && Files::remove(place);
}

enum class Outcome { given, taken, standsThere };

Outcome tryToGive(const fs::path& place, const fs::path& file) {
  constexpr int mostTries = 8;  // against somebody who takes the place whenever it is free
  for (int tries = 0; tries < mostTries; ++tries) {
    if (Files::moveToFree(file, place)) return Outcome::given;
    if (Files::kindOf(place) == Files::Kind::file && Files::haveSameBytes(file, place)) return Outcome::standsThere;
    if (!makeFree(place)) return Outcome::taken;
  }
  throw CopyError(FailureReason::placeTaken);
}

}  // namespace

bool CopyPlace::give(ExportPlanner::PlannedCopy& copy, const fs::path& file) {
  for (int number = 2;; ++number) {
    const Outcome outcome = tryToGive(copy.dest, file);
    if (outcome != Outcome::taken) return outcome == Outcome::given;
    copy.exportedName = FileNaming::variant(copy.desiredName, number);
    copy.dest.replace_filename(PathText::path(copy.exportedName));
  }
}
