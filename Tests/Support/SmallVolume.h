#pragma once

#include <sys/mount.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace Fixture {

// A volume of so many bytes, in memory, for as long as this lives.
class SmallVolume {
 public:
  SmallVolume(std::filesystem::path place, std::int64_t byteCount) : place_(std::move(place)) {
    std::filesystem::create_directories(place_);
    const std::string size = "size=" + std::to_string(byteCount);
    isMounted_ = ::mount("tmpfs", place_.c_str(), "tmpfs", 0, size.c_str()) == 0;
  }
  ~SmallVolume() {
    if (isMounted_) ::umount2(place_.c_str(), MNT_DETACH);
  }
  SmallVolume(const SmallVolume&) = delete;
  SmallVolume& operator=(const SmallVolume&) = delete;

  // False when this user may not mount volumes.
  bool isMounted() const { return isMounted_; }
  // From now on nothing can be written to it. False when that failed.
  bool protect() const { return ::mount("tmpfs", place_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0; }

 private:
  std::filesystem::path place_;
  bool isMounted_ = false;
};

}  // namespace Fixture
