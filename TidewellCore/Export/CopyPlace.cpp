#include "TidewellCore/Export/CopyPlace.h"

#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/FailureOf.h"
#include "TidewellCore/Platform/Files.h"

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

SettledCopy CopyPlace::give(const ExportPlanner::PlannedCopy& copy, const fs::path& contentRoot, const fs::path& file) {
  SettledCopy settled{.copy = &copy, .place = copy.dest};
  settled.failure = failureOf([&] {
    Outcome outcome = tryToGive(settled.place.in(contentRoot), file);
    for (int number = 2; outcome == Outcome::taken; ++number) {
      settled.place.name = FileNaming::variant(copy.desiredName, number);
      outcome = tryToGive(settled.place.in(contentRoot), file);
    }
    settled.wasThere = outcome == Outcome::standsThere;
  });
  return settled;
}
