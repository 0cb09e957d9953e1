#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Drives/DriveOptions.h"

namespace Fixture {

// A drive at `place`, for as long as this lives. Where it cannot be had, as
// where this user may not mount one, the test is to be skipped with `whyNot`.
class Drive {
 public:
  // With FAT's rules, and faults at wish. What is on it stands in `folder`.
  Drive(const std::filesystem::path& folder, const std::filesystem::path& place, const DriveOptions& options = {});
  // Those that are sold, in an image file: NTFS that takes the names that Windows takes;
  // exFAT and FAT, where the system's kernel knows them.
  static Drive ntfs(const std::filesystem::path& image, const std::filesystem::path& place);
  static Drive exfat(const std::filesystem::path& image, const std::filesystem::path& place);
  static Drive vfat(const std::filesystem::path& image, const std::filesystem::path& place);
  ~Drive();
  Drive(const Drive&) = delete;
  Drive& operator=(const Drive&) = delete;

  bool isMounted() const { return whyNot_.empty(); }
  const std::string& whyNot() const { return whyNot_; }

  // As somebody pulls a stick out: whatever is asked of it fails from now on.
  void pullOut();
  // As somebody unmounts it although it is in use: its place is an empty folder from now on.
  void unmount();

 private:
  using Command = std::vector<std::string>;

  // `format` makes the drive, unless it is empty; `mount` may stay as long as the drive does.
  Drive(std::filesystem::path place, const Command& format, const Command& mount);
  void run(const Command& format, const Command& mount);
  void waitForMount(const Command& mount);

  std::filesystem::path place_;
  std::string whyNot_;
  pid_t process_ = -1;
};

}  // namespace Fixture
