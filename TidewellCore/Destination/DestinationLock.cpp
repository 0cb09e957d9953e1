#include "TidewellCore/Destination/DestinationLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <system_error>

#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

int opened(const fs::path& folder) { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }

// True as well where there are no locks.
bool locked(int folder) { return ::flock(folder, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

// The folder whose export has its content in `destination`, if there is one.
std::optional<fs::path> folderAbove(const fs::path& destination) {
  std::error_code error;
  const fs::path whole = fs::canonical(destination, error);
  if (error || Text::lowercased(PathText::text(whole.filename())) != FolderNames::content) return std::nullopt;
  return whole.parent_path();
}

}  // namespace

DestinationLock::DestinationLock(const fs::path& destination)
    : destination_(destination), root_(destination), folder_(opened(destination)) {
  if (folder_ < 0) {
    throw fs::filesystem_error("Could not open the folder", destination, {errno, std::generic_category()});
  }
  bool isLocked = locked(folder_);
  if (const auto above = folderAbove(destination)) {
    above_ = opened(*above);  // one that cannot be opened is nobody's destination
    isLocked = isLocked && (above_ < 0 || locked(above_));
  }
  if (isLocked) return;
  close();
  throw TidewellError::ioFailure("Another export is writing into this folder. Wait until it has finished.");
}

void DestinationLock::requireInPlace() const {
  struct stat locked {};
  struct stat named {};
  if (::fstat(folder_, &locked) == 0 && ::stat(destination_.c_str(), &named) == 0 && locked.st_dev == named.st_dev &&
      locked.st_ino == named.st_ino) {
    return;
  }
  throw TidewellError::destinationNotWritable(PathText::text(destination_));
}

DestinationLock::~DestinationLock() { close(); }

void DestinationLock::close() const {
  ::close(folder_);
  if (above_ >= 0) ::close(above_);
}
