#include "TidewellCore/Export/MediaCopier.h"

#include <algorithm>
#include <array>

#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;

// Whether a path of that failure is the backup's file.
bool isOfBackup(const fs::filesystem_error& error, const PlannedCopy& copy) {
  return error.path1() == copy.source && !copy.leftoverFolder;
}

FailureReason reasonOfFile(const fs::filesystem_error& error, const PlannedCopy& copy) {
  const std::error_code code = error.code();
  if (isOfBackup(error, copy)) {
    const bool isGone = code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory;
    return isGone ? FailureReason::missing : FailureReason::unreadable;
  }
  if (code == std::errc::file_too_large) return FailureReason::tooLarge;
  if (code == std::errc::file_exists && error.path1() == copy.dest) return FailureReason::placeTaken;
  return FailureReason::unwritable;
}

[[noreturn]] void failAsOccupied(const fs::path& path) {
  throw fs::filesystem_error("Something else stands in the file's place", path,
                             std::make_error_code(std::errc::file_exists));
}

// The plan gives no name that is taken, so a file there has come since. It
// makes room for the copy when that is whole; anything else stays.
void moveIntoPlace(const fs::path& partial, const fs::path& dest) {
  if (Files::renameToFree(partial, dest)) return;
  if (!Files::isRegularFile(dest)) failAsOccupied(dest);
  fs::rename(partial, dest);
}

void setDate(const fs::path& file, const PlannedCopy& copy) {
  if (copy.date) Files::setModificationDate(file, *copy.date);
}

bool isWithoutOwnContent(const Files::Entry& entry) {
  constexpr std::array<std::string_view, 3> names{FolderNames::textTranscript, FolderNames::htmlTranscript,
                                                  ".DS_Store"};
  return !entry.isFolder && std::ranges::find(names, entry.name) != names.end();
}

void removeIfEmptied(const fs::path& folder) {
  const std::vector<Files::Entry> entries = Files::list(folder);
  if (!std::ranges::all_of(entries, isWithoutOwnContent)) return;
  for (const Files::Entry& entry : entries) fs::remove(folder / entry.name);
  fs::remove(folder);
}

}  // namespace

MediaCopier::MediaCopier(const OpenedBackup& opened, DestinationIndex& index, CancellationCheck isCancelled)
    : opened_(opened), index_(index), isCancelled_(std::move(isCancelled)) {}

MediaCopier::Outcome MediaCopier::carryOut(const PlannedCopy& copy) {
  if (copy.alreadyPresent) return Outcome::alreadyPresent;
  if (copy.sourceSize < 0) failAsDamaged(copy);
  fs::create_directories(copy.dest.parent_path());
  const bool hasCome = Files::regularFileSize(copy.dest) == copy.sourceSize;
  if (!hasCome) copy.leftoverFolder ? move(copy) : write(copy);
  index_.addFile(PathText::text(copy.dest.parent_path().filename()), copy.exportedName, copy.sourceSize);
  return hasCome ? Outcome::alreadyPresent : Outcome::copied;
}

bool MediaCopier::hasKey(const PlannedCopy& copy) const {
  if (!copy.encryptionKey || !opened_.unlocker()) return true;
  try {
    opened_.unlocker()->keyBag.unwrapPersistentKey(*copy.encryptionKey);
    return true;
  } catch (const TidewellError&) {
    return false;
  }
}

void MediaCopier::failAsDamaged(const PlannedCopy& copy) const {
  if (copy.source.empty()) throw CopyError(FailureReason::missing);
  FileDescriptor::openForReading(copy.source);
  throw CopyError(hasKey(copy) ? FailureReason::cutShort : FailureReason::keyMissing);
}

FailureReason MediaCopier::reasonOf(const std::exception& error, const PlannedCopy& copy) const {
  if (const auto* known = dynamic_cast<const CopyError*>(&error)) return known->reason;
  if (const auto* file = dynamic_cast<const fs::filesystem_error*>(&error)) return reasonOfFile(*file, copy);
  if (dynamic_cast<const TidewellError*>(&error) == nullptr) return FailureReason::other;
  return hasKey(copy) ? FailureReason::undecryptable : FailureReason::keyMissing;
}

void MediaCopier::move(const PlannedCopy& copy) {
  if (!Files::moveToFree(copy.source, copy.dest)) failAsOccupied(copy.dest);
  index_.removeFile(*copy.leftoverFolder, PathText::text(copy.source.filename()));
  setDate(copy.dest, copy);
}

void MediaCopier::write(const PlannedCopy& copy) const {
  const fs::path partial = copy.dest.parent_path() / Files::partialName();
  try {
    const StoredFile stored{.location = copy.source, .encryptionKey = copy.encryptionKey, .size = copy.sourceSize};
    if (opened_.writePlaintext(stored, partial, isCancelled_) != copy.sourceSize) {
      throw CopyError(FailureReason::cutShort);
    }
    setDate(partial, copy);
    moveIntoPlace(partial, copy.dest);
  } catch (...) {
    std::error_code ignored;
    fs::remove(partial, ignored);
    throw;
  }
}

void MediaCopier::removeEmptied(const ExportPlanner::LeftoverFolders& formerFolders) const {
  for (const auto& [jid, folders] : formerFolders) {
    for (const std::string& folder : folders) {
      try {
        removeIfEmptied(index_.destination / PathText::path(folder));
      } catch (const fs::filesystem_error&) {
        // What cannot be removed stays, and harms nothing.
      }
    }
  }
}
