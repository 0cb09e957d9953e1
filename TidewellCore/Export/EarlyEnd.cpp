#include "TidewellCore/Export/EarlyEnd.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

// Whether what was written belongs to the export; else it is a working copy.
bool isInDestination(const std::exception& error, const EarlyEnd::Places& places) {
  const auto* failure = dynamic_cast<const fs::filesystem_error*>(&error);
  if (failure == nullptr || places.destination == nullptr) return false;
  const fs::path relative = failure->path1().lexically_relative(*places.destination);
  return !relative.empty() && *relative.begin() != "..";
}

// Another folder helps who has the backup.
const char* whenFull(const EarlyEnd::Places& places) {
  return places.backup == nullptr ? EarlyEnd::fullExport : EarlyEnd::fullDestination;
}
const char* whenBroken(const EarlyEnd::Places& places) {
  return places.backup == nullptr ? EarlyEnd::exportBroken : EarlyEnd::destinationBroken;
}

// Writes as an export does: a broken disk may still tell what it told before.
void requireDestination(const EarlyEnd::Places& places) {
  const fs::path trial = *places.destination / Files::partialName();
  try {
    Files::writeAtomically(trial, "x");
    Files::remove(trial);
  } catch (const fs::filesystem_error& error) {
    if (EarlyEnd::isFullDisk(error)) throw;
    throw TidewellError::ioFailure(whenBroken(places));
  }
}

// A name or a permission is one file's trouble.
bool mayBeOfDestination(const std::exception& error) {
  const auto* failure = dynamic_cast<const fs::filesystem_error*>(&error);
  const int code = failure == nullptr ? 0 : failure->code().value();
  return EarlyEnd::isOfDisk(error) || code == EROFS || code == ENOENT;
}

// What cannot be looked at may be there.
template <typename Finding>
bool isKnown(Finding finding) {
  try {
    return finding();
  } catch (const fs::filesystem_error&) {
    return false;
  }
}

// Folders are made where they are missing; the mark of the export's own is not.
bool isTakenAway(const fs::path& destination) {
  return isKnown([&] { return !Files::isThere(destination / FolderNames::content / FolderNames::viewer); });
}

}  // namespace

bool EarlyEnd::isBackup(const fs::path& folder) {
  return Files::isThere(folder / "Manifest.plist") && Files::isThere(folder / "Manifest.db");
}

void EarlyEnd::requireBackup(const Places& places) {
  if (places.backup == nullptr || !isKnown([&] { return !isBackup(*places.backup); })) return;
  throw TidewellError::ioFailure(places.destination == nullptr ? backupGoneWhileRead : backupGone);
}

bool EarlyEnd::isFullDisk(const std::exception& error) {
  const auto* failure = dynamic_cast<const fs::filesystem_error*>(&error);
  return failure != nullptr && (failure->code().value() == ENOSPC || failure->code().value() == EDQUOT);
}

bool EarlyEnd::isOfDisk(const std::exception& error) {
  constexpr std::array codes{EIO, ENXIO, ENODEV, ESTALE, ENOTCONN};
  const auto* failure = dynamic_cast<const fs::filesystem_error*>(&error);
  return failure != nullptr && std::ranges::find(codes, failure->code().value()) != codes.end();
}

// Looked at once: a disk that comes and goes must not make one file's failure the run's.
void EarlyEnd::throwWhenDue(const std::exception& error, const Places& places) {
  if (TidewellError::isCancellation(error) || isFullDisk(error)) throw;
  requireBackup(places);
  if (isInDestination(error, places) && mayBeOfDestination(error)) requireDestination(places);
}

void EarlyEnd::rethrow(const std::exception& error, const Places& places, bool wasBackup) {
  if (TidewellError::isCancellation(error)) throw;
  if (isFullDisk(error)) {
    throw TidewellError::ioFailure(isInDestination(error, places) ? whenFull(places) : fullTemporaryFolder);
  }
  if (isInDestination(error, places) && isTakenAway(*places.destination)) {
    throw TidewellError::destinationNotWritable(PathText::text(*places.destination));
  }
  if (wasBackup) requireBackup(places);
  if (isInDestination(error, places) && isOfDisk(error)) throw TidewellError::ioFailure(whenBroken(places));
  throw;
}
