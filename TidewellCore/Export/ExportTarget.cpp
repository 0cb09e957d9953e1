#include "TidewellCore/Export/ExportTarget.h"

#include "TidewellCore/Destination/DiskSpace.h"
#include "TidewellCore/Destination/ExportLayout.h"
#include "TidewellCore/Destination/NameProbe.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

bool isWithinAnyBackup(const fs::path& destination) {
  fs::path folder = fs::weakly_canonical(fs::absolute(destination));
  while (!EarlyEnd::isBackup(folder)) {
    if (folder == folder.parent_path()) return false;
    folder = folder.parent_path();
  }
  return true;
}

// Nothing in a backup is ever changed, so nothing is exported into one, be it another than the one that is read.
void requireOutsideBackups(const fs::path& destination) {
  if (isWithinAnyBackup(destination)) throw TidewellError::destinationNotWritable(PathText::text(destination));
}
void requireOutside(const fs::path& destination, const fs::path& backup) {
  if (Files::isWithin(destination, backup)) {
    throw TidewellError::destinationNotWritable(PathText::text(destination));
  }
}

// What keeps the destination from being made ready is told as one thing.
template <typename Work>
auto madeReady(const fs::path& destination, Work work) {
  try {
    return work();
  } catch (const fs::filesystem_error& error) {
    if (EarlyEnd::isFullDisk(error)) throw;
    throw TidewellError::destinationNotWritable(PathText::text(destination));
  }
}

DestinationLock locked(const fs::path& destination, const fs::path& backup) {
  return madeReady(destination, [&] {
    requireOutside(destination, backup);
    requireOutsideBackups(destination);
    Files::makeFolder(destination);
    return DestinationLock(destination);
  });
}

DestinationLock lockedAsItIs(const fs::path& destination) {
  return madeReady(destination, [&] {
    requireOutsideBackups(destination);
    return DestinationLock(destination);
  });
}

// With the library in it, which is in the folder "messages" unless that was moved elsewhere alone and is named itself.
fs::path contentRootOf(const fs::path& destination) {
  fs::path content = destination / FolderNames::content;
  const bool isThere = Files::kindOf(content / LibraryFile::fileName) != Files::Kind::nothing;
  return isThere ? content : ExportLayout::resolveContentRoot(destination);
}

fs::path prepared(const fs::path& destination, const fs::path& backup, const ExportTarget::Check& check) {
  check(destination / FolderNames::content);
  return madeReady(destination, [&] { return ExportLayout::prepare(destination, backup); });
}

}  // namespace

ExportTarget::ExportTarget(const fs::path& destination, const fs::path& backup, const Check& check)
    : destination_(destination),
      lock_(locked(destination, backup)),
      disk_(destination),
      contentRoot_(prepared(destination, backup, check)),
      nameForm_(madeReady(destination, [&] { return NameProbe::formFor(contentRoot_); })) {
  madeReady(destination, [&] { includeVolumes(); });
}

ExportTarget::ExportTarget(const fs::path& destination, Standing)
    : destination_(destination),
      lock_(lockedAsItIs(destination)),
      disk_(destination),
      contentRoot_(contentRootOf(destination)) {
  madeReady(destination, [&] {
    ExportLayout::removePartials(destination_, contentRoot_);
    includeVolumes();
  });
}

ExportTarget ExportTarget::standing(const fs::path& destination) { return {destination, Standing()}; }

// The content root or a chat's folder may be where another volume is mounted.
void ExportTarget::includeVolumes() {
  disk_.include(contentRoot_);
  for (const Files::Entry& entry : Files::list(contentRoot_)) {
    if (entry.isFolder) disk_.include(contentRoot_ / PathText::path(entry.name));
  }
}

DestinationIndex ExportTarget::index(const CancellationCheck& isCancelled) const {
  DestinationIndex index = DestinationIndex::load(contentRoot_, isCancelled);
  index.nameForm = nameForm_;
  return index;
}

void ExportTarget::requireSpace(std::int64_t bytes) const {
  if (DiskSpace::fitsExport(bytes, DiskSpace::availableBytes(contentRoot_))) return;
  throw TidewellError::ioFailure("Not enough free space — choose another folder");
}

void ExportTarget::flush(const std::vector<std::string>& chatFolders) const try {
  if (disk_.flush()) return;
  const fs::path viewer = contentRoot_ / FolderNames::viewer;
  std::vector<fs::path> folders{destination_, contentRoot_, viewer, viewer / FolderNames::viewerData,
                                contentRoot_ / FolderNames::avatars};
  for (const std::string& folder : chatFolders) folders.push_back(contentRoot_ / PathText::path(folder));
  for (const fs::path& folder : folders) {
    if (Files::kindOf(folder) == Files::Kind::folder) Files::flush(folder);
  }
} catch (const fs::filesystem_error& error) {
  if (EarlyEnd::isFullDisk(error)) throw;
  throw TidewellError::ioFailure(EarlyEnd::destinationBroken);
}
