#include "TidewellCore/Platform/FlushPoint.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/utsname.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

// The kernel does not pass the flush of a volume on to a file system that is a program (FUSE).
bool isProgram(int folder) {
  struct statfs status {};
  return ::fstatfs(folder, &status) != 0 || status.f_type == FUSE_SUPER_MAGIC;
}

// Older systems flush, but keep to themselves what did not arrive.
bool tellsOfFailures() {
  constexpr std::pair firstThatDoes{5, 8};  // of Linux
  utsname system{};
  std::pair version{0, 0};
  const bool isKnown = ::uname(&system) == 0 && std::sscanf(static_cast<const char*>(system.release), "%d.%d",
                                                            &version.first, &version.second) == 2;
  return isKnown && version >= firstThatDoes;
}

}  // namespace

FlushPoint::FlushPoint(const fs::path& folder)
    : folder_(folder), number_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (number_ < 0) throw fs::filesystem_error("Could not open the folder", folder, {errno, std::generic_category()});
}

FlushPoint::~FlushPoint() { ::close(number_); }

bool FlushPoint::flush() const {
  if (isProgram(number_) || !tellsOfFailures()) return false;
  // It tells of every write to the volume that failed since the folder was opened.
  if (::syncfs(number_) == 0) return true;
  if (errno == ENOSYS) return false;
  throw fs::filesystem_error("Could not write to the disk of", folder_, {errno, std::generic_category()});
}
