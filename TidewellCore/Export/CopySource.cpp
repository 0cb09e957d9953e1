#include "TidewellCore/Export/CopySource.h"

#include <iterator>
#include <optional>

#include "TidewellCore/Platform/FailureOf.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

using ExportPlanner::PlannedCopy;

StoredFile CopySource::storedFile(const PlannedCopy& copy) {
  return {.location = PathText::path(copy.source), .encryptionKey = copy.encryptionKey, .size = copy.sourceSize};
}

CopySource::Likeness CopySource::compareEnds(const PlannedCopy& copy, const std::filesystem::path& file,
                                             const OpenedBackup& opened) {
  if (!copy.encryptionKey && copy.soundness != ExportPlanner::Soundness::doubtful) return Likeness::untold;
  std::optional<Bytes> end;
  if (failureOf([&] { end = opened.wholeEnd(storedFile(copy)); })) return Likeness::untold;
  if (!end) return Likeness::notWhole;
  return Files::lastBytes(file, std::ssize(*end)) == *end ? Likeness::same : Likeness::other;
}
