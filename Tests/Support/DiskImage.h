#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace Fixture {

// A disk with an ext4 volume, kept in a file: what that file holds is what the
// disk would hold if the power went away now.
class DiskImage {
 public:
  // Makes an image of `byteCount` bytes with an empty volume. `folder` must exist and
  // gets the image and the mount point.
  DiskImage(const std::filesystem::path& folder, std::int64_t byteCount);
  // Takes an image that is there, as a disk that is plugged in again.
  DiskImage(const std::filesystem::path& folder, const std::filesystem::path& image);
  ~DiskImage();
  DiskImage(const DiskImage&) = delete;
  DiskImage& operator=(const DiskImage&) = delete;

  // False when this user cannot mount volumes, or the system has no loop devices.
  bool isMounted() const { return isMounted_; }
  const std::filesystem::path& image() const { return image_; }
  std::filesystem::path root() const { return root_; }

 private:
  void mount();

  std::filesystem::path image_;
  std::filesystem::path root_;
  bool isMounted_ = false;
};

}  // namespace Fixture
