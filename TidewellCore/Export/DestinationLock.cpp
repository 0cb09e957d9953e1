#include "TidewellCore/Export/DestinationLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

DestinationLock::DestinationLock(const std::filesystem::path& destination)
    : destination_(destination),
      root_(destination),
      folder_(::open(destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (folder_ < 0) {
    throw std::filesystem::filesystem_error("Could not open the folder", destination, {errno, std::generic_category()});
  }
  if (::flock(folder_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  ::close(folder_);
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

DestinationLock::~DestinationLock() { ::close(folder_); }
