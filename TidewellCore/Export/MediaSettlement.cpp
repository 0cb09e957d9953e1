#include "TidewellCore/Export/MediaSettlement.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "TidewellCore/Export/CopySource.h"
#include "TidewellCore/Platform/FailureOf.h"

namespace {

using ExportPlanner::PlannedCopy;
using MediaSettlement::Ground;

KeptMedium mediumOf(const PlannedCopy& copy, const ExportPlace& place, std::int64_t size, bool isDoubtful,
                    const Ground& ground) {
  return {.path = copy.relativePath,
          .place = place,
          .size = size,
          .date = copy.date,
          .kind = copy.kind,
          .chatJID = copy.chatJID.text(),
          .isThere = true,
          .isDoubtful = isDoubtful,
          .sentDigest = std::string(ground.source.snapshot.sentDigest(copy.relativePath))};
}

// Of the file that stands at the place now, in bytes.
std::int64_t sizeOf(const PlannedCopy& copy, const MediaResult& result, const DestinationIndex& index) {
  if (result.outcome == MediaResult::Outcome::copied) return result.copiedBytes;
  const auto* moved = std::get_if<ExportPlanner::Moved>(&copy.fate);
  const ExportPlace& before = moved == nullptr ? result.place : moved->from;
  const DestinationIndex::FileEntry* file = index.file(before.folder, before.name);
  return file == nullptr ? copy.sourceSize : file->size;
}

// Of a file that this export left as it was.
bool isDoubtful(const PlannedCopy& copy, const Ground& ground) {
  if (copy.soundness == ExportPlanner::Soundness::known) return false;
  auto likeness = CopySource::Likeness::other;  // a file that cannot be read cannot be vouched for
  failureOf(
      [&] { likeness = CopySource::compareEnds(copy, copy.dest.in(ground.index.destination), ground.source.opened); });
  if (likeness == CopySource::Likeness::untold) return copy.soundness == ExportPlanner::Soundness::doubtful;
  return likeness != CopySource::Likeness::same;
}

// A file that was moved may be known to be other media too.
void followMoves(MediaLedger& ledger, const Ground& ground, const std::vector<MediaResult>& results) {
  std::map<ExportPlace, ExportPlace> moved;
  for (std::size_t number = 0; number < results.size(); ++number) {
    const auto* fate = std::get_if<ExportPlanner::Moved>(&ground.plan.copies[number].fate);
    if (fate != nullptr && !results[number].hasFailed()) moved.emplace(fate->from, results[number].place);
  }
  if (moved.empty()) return;
  ledger.relocate([&](const ExportPlace& former) -> std::optional<ExportPlace> {
    const auto place = ground.index.place(former.folder, former.name);
    const auto found = place ? moved.find(*place) : moved.end();
    return found == moved.end() ? std::nullopt : std::optional(found->second);
  });
}

}  // namespace

void MediaSettlement::settle(MediaLedger& ledger, const Ground& ground, const std::vector<MediaResult>& results) {
  for (std::size_t number = 0; number < results.size(); ++number) {
    const MediaResult& result = results[number];
    if (result.hasFailed()) continue;
    const PlannedCopy& copy = ground.plan.copies[number];
    ledger.settle(mediumOf(copy, result.place, sizeOf(copy, result, ground.index), result.isDoubtful, ground),
                  result.outcome == MediaResult::Outcome::copied);
  }
  for (const PlannedCopy& copy : ground.plan.earlier) {
    ledger.settle(mediumOf(copy, copy.dest, copy.sourceSize, isDoubtful(copy, ground), ground));
  }
  ledger.review([&](const ExportPlace& place, std::int64_t size) {
    const DestinationIndex::FileEntry* file = ground.index.file(place.folder, place.name);
    return file != nullptr && file->size == size;
  });
  followMoves(ledger, ground, results);
}
