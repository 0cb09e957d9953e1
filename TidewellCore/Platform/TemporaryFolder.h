#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// A folder of its own under TMPDIR, else /tmp, readable by this user alone (mode
// 0700), removed with all it holds when its owner goes. It is locked as long as
// its owner lives, and so tells a sweep whether it was left behind
// (docs/decisions/0019-working-folders-are-locked-and-swept.md).
class TemporaryFolder {
 public:
  // What working folders are for; a sweep knows them by these.
  static constexpr std::string_view manifestPrefix = "Tidewell-manifest-";
  static constexpr std::string_view databasesPrefix = "Tidewell-databases-";
  static constexpr std::string_view mediaPrefix = "Tidewell-media-";

  // Whether a name is one of a working folder.
  static bool isName(std::string_view name);

  // Named `prefix` + a random UUID in upper case.
  explicit TemporaryFolder(std::string_view prefix);
  ~TemporaryFolder();
  TemporaryFolder(TemporaryFolder&& other) noexcept;
  TemporaryFolder& operator=(TemporaryFolder&& other) noexcept;

  const std::filesystem::path& path() const { return path_; }

  // Removes the folders of this user that owners left behind which did not live
  // to remove them. What cannot be looked at or removed stays for the next sweep.
  static void sweep() noexcept;

  // For a program that is about to end in the midst of its work: removes the
  // folders of all owners. Threads that make or give up a folder wait from now on.
  static void removeAllForGood() noexcept;

 private:
  std::filesystem::path path_;
  int lock_ = -1;
};
