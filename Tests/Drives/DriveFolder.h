#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <functional>
#include <set>
#include <string>

#include "Tests/Drives/DriveOptions.h"

namespace Fixture {

// A drive's files, kept in a folder of the machine. Paths are the drive's own
// and begin with "/". Operations return 0, or what they count, else -errno.
class DriveFolder {
 public:
  DriveFolder(std::string folder, DriveOptions options) : folder_(std::move(folder)), options_(options) {}

  int status(const std::string& path, struct stat& status) const;
  int list(const std::string& path, const std::function<void(const char* name)>& take) const;
  int makeFolder(const std::string& path);
  int removeFolder(const std::string& path);
  int remove(const std::string& path);
  int rename(const std::string& from, const std::string& to, bool mayReplace);
  int setDates(const std::string& path, timespec accessed, timespec modified);
  int resize(const std::string& path, std::int64_t size);

  // Both return an open file's number.
  int create(const std::string& path, int flags);
  int open(const std::string& path, int flags);
  int write(int file, const char* bytes, std::size_t count, std::int64_t offset);
  // What a flush of that file comes to.
  int flush(int file) const;

  std::int64_t used() const { return used_; }
  const DriveOptions& options() const { return options_; }

 private:
  // Where the entry of a drive's path stands, in the spelling it has.
  std::string place(const std::string& path) const;
  // The same for an entry to be made; an empty `result` comes with -errno.
  int newPlace(const std::string& path, std::string& result) const;
  void forget(const std::string& place);

  std::string folder_;
  DriveOptions options_;
  std::int64_t used_ = 0;       // bytes of all files
  std::set<ino_t> incomplete_;  // files that lost something
};

}  // namespace Fixture
