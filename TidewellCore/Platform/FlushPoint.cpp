#include "TidewellCore/Platform/FlushPoint.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
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

[[noreturn]] void fail(const char* what, const fs::path& folder) {
  throw fs::filesystem_error(what, folder, {errno, std::generic_category()});
}

}  // namespace

FlushPoint::FlushPoint(const fs::path& folder) { include(folder); }

FlushPoint::~FlushPoint() {
  for (const Volume& volume : volumes_) ::close(volume.number);
}

void FlushPoint::include(const fs::path& folder) {
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) fail("Could not look at the folder", folder);
  if (std::ranges::find(volumes_, status.st_dev, &Volume::device) != volumes_.end()) return;
  const int number = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (number < 0) fail("Could not open the folder", folder);
  volumes_.push_back({.folder = folder, .number = number, .device = status.st_dev});
}

bool FlushPoint::flush() const {
  if (!tellsOfFailures()) return false;
  bool isWhole = true;
  for (const Volume& volume : volumes_) {
    if (isProgram(volume.number)) {
      isWhole = false;
    } else if (::syncfs(volume.number) != 0) {  // tells of every write that failed since the folder was opened
      if (errno != ENOSYS) fail("Could not write to the disk of", volume.folder);
      isWhole = false;
    }
  }
  return isWhole;
}
