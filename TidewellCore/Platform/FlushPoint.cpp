#include "TidewellCore/Platform/FlushPoint.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

namespace fs = std::filesystem;

// The kernel does not pass the flush of a volume on to a file system that is a program (FUSE).
bool isProgram(int folder) {
  struct statfs status {};
  return ::fstatfs(folder, &status) != 0 || status.f_type == FUSE_SUPER_MAGIC;
}

}  // namespace

FlushPoint::FlushPoint(const fs::path& folder)
    : folder_(folder), number_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (number_ < 0) throw fs::filesystem_error("Could not open the folder", folder, {errno, std::generic_category()});
}

FlushPoint::~FlushPoint() { ::close(number_); }

bool FlushPoint::flush() const {
  if (isProgram(number_)) return false;
  // Since Linux 5.8 it tells of every write to the volume that failed since the folder was opened.
  if (::syncfs(number_) == 0) return true;
  if (errno == ENOSYS) return false;
  throw fs::filesystem_error("Could not write to the disk of", folder_, {errno, std::generic_category()});
}
