#include "Tests/Drives/DriveFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <thread>

#include "Tests/Drives/DriveNames.h"

namespace Fixture {
namespace {

// FAT's dates: 1980 to 2107, in steps of two seconds.
constexpr std::int64_t firstSecond = 315'532'800;
constexpr std::int64_t lastSecond = 4'354'819'198;

using Listing = std::unique_ptr<DIR, int (*)(DIR*)>;

int outcome(int result) { return result < 0 ? -errno : result; }

bool stands(const std::string& place) {
  struct stat status {};
  return ::lstat(place.c_str(), &status) == 0;
}

std::int64_t sizeAt(const std::string& place) {
  struct stat status {};
  return ::lstat(place.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

// The entry's own spelling, when `folder` holds one that is `name` to the drive.
std::optional<std::string> spelling(const std::string& folder, const std::string& name, const DriveOptions& options) {
  if (stands(folder + "/" + name)) return name;
  const Listing listing(::opendir(folder.c_str()), ::closedir);
  const std::string key = DriveNames::key(name, options);
  while (const dirent* entry = listing ? ::readdir(listing.get()) : nullptr) {
    if (DriveNames::key(entry->d_name, options) == key) return entry->d_name;
  }
  return std::nullopt;
}

std::string lastName(const std::string& path) { return path.substr(path.rfind('/') + 1); }
std::string above(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

std::string DriveFolder::place(const std::string& path) const {
  std::string place = folder_;
  for (std::size_t begin = 1; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string name = path.substr(begin, end - begin);
    place += "/" + spelling(place, name, options_).value_or(name);
    begin = end + 1;
  }
  return place;
}

int DriveFolder::newPlace(const std::string& path, std::string& result) const {
  const auto name = DriveNames::stored(lastName(path), options_);
  if (!name) return -EINVAL;
  const std::string folder = place(above(path));
  result = folder + "/" + spelling(folder, *name, options_).value_or(*name);
  return 0;
}

int DriveFolder::status(const std::string& path, struct stat& status) const {
  if (::lstat(place(path).c_str(), &status) != 0) return -errno;
  // FAT knows no owners and no rights.
  status.st_mode = S_ISDIR(status.st_mode) ? S_IFDIR | 0777 : S_IFREG | 0777;
  return 0;
}

int DriveFolder::list(const std::string& path, const std::function<void(const char*)>& take) const {
  const Listing listing(::opendir(place(path).c_str()), ::closedir);
  if (!listing) return -errno;
  while (const dirent* entry = ::readdir(listing.get())) take(entry->d_name);
  return 0;
}

int DriveFolder::makeFolder(const std::string& path) {
  std::string made;
  if (const int refused = newPlace(path, made)) return refused;
  return outcome(::mkdir(made.c_str(), 0777));
}

int DriveFolder::removeFolder(const std::string& path) { return outcome(::rmdir(place(path).c_str())); }

void DriveFolder::forget(const std::string& place) {
  struct stat status {};
  if (::lstat(place.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  used_ -= status.st_size;
  incomplete_.erase(status.st_ino);
}

int DriveFolder::remove(const std::string& path) {
  const std::string removed = place(path);
  forget(removed);
  return outcome(::unlink(removed.c_str()));
}

int DriveFolder::rename(const std::string& from, const std::string& to, bool mayReplace) {
  const std::string old = place(from);
  std::string renamed;
  if (const int refused = newPlace(to, renamed)) return refused;
  const bool isItself = old == renamed;
  if (isItself) renamed = above(renamed) + "/" + *DriveNames::stored(lastName(to), options_);
  if (!isItself && stands(renamed)) {
    if (!mayReplace) return -EEXIST;
    forget(renamed);
  }
  return outcome(::rename(old.c_str(), renamed.c_str()));
}

int DriveFolder::setDates(const std::string& path, timespec accessed, timespec modified) {
  std::array<timespec, 2> times{accessed, modified};
  for (timespec& time : times) {
    if (time.tv_nsec == UTIME_OMIT || time.tv_nsec == UTIME_NOW) continue;
    const bool isWithin = time.tv_sec >= firstSecond && time.tv_sec <= lastSecond;
    if (!isWithin && options_.refusesDates) return -EINVAL;
    time.tv_sec = std::clamp<std::int64_t>(time.tv_sec, firstSecond, lastSecond) / 2 * 2;
    time.tv_nsec = 0;
  }
  return outcome(::utimensat(AT_FDCWD, place(path).c_str(), times.data(), AT_SYMLINK_NOFOLLOW));
}

int DriveFolder::resize(const std::string& path, std::int64_t size) {
  if (size > options_.largestFile) return -EFBIG;
  const std::string resized = place(path);
  const std::int64_t growth = size - sizeAt(resized);
  if (growth > 0 && used_ + growth > options_.capacity) return -ENOSPC;
  const int result = outcome(::truncate(resized.c_str(), size));
  if (result == 0) used_ += growth;
  return result;
}

int DriveFolder::create(const std::string& path, int flags) {
  std::string made;
  if (const int refused = newPlace(path, made)) return refused;
  return outcome(::open(made.c_str(), flags | O_CREAT | O_CLOEXEC, 0666));
}

int DriveFolder::open(const std::string& path, int flags) {
  const std::string opened = place(path);
  if ((flags & O_TRUNC) != 0) forget(opened);
  // The system's late writes read pages first, and come at places of their own.
  int own = flags & ~O_APPEND;
  if (options_.writesLate && (own & O_ACCMODE) == O_WRONLY) own = (own & ~O_ACCMODE) | O_RDWR;
  return outcome(::open(opened.c_str(), own | O_CLOEXEC));
}

int DriveFolder::write(int file, const char* bytes, std::size_t count, std::int64_t offset) {
  if (offset >= options_.largestFile) return -EFBIG;
  count = std::min(count, static_cast<std::size_t>(options_.largestFile - offset));
  struct stat status {};
  if (::fstat(file, &status) != 0) return -errno;
  const auto end = offset + static_cast<std::int64_t>(count);
  const std::int64_t growth = std::max<std::int64_t>(0, end - status.st_size);
  if (used_ + growth <= options_.capacity) {
    used_ += growth;
    return outcome(static_cast<int>(::pwrite(file, bytes, count, offset)));
  }
  if (!options_.losesWhatIsTooMuch) return -ENOSPC;
  incomplete_.insert(status.st_ino);
  if (options_.writesLate) return -EIO;
  used_ += growth;
  return ::ftruncate(file, std::max<std::int64_t>(end, status.st_size)) == 0 ? static_cast<int>(count) : -errno;
}

int DriveFolder::flush(int file) const {
  struct stat status {};
  if (::fstat(file, &status) != 0) return -errno;
  std::this_thread::sleep_for(std::chrono::milliseconds(options_.flushTakes));
  return options_.failsFlushes || incomplete_.contains(status.st_ino) ? -EIO : 0;
}

}  // namespace Fixture
