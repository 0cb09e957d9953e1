#pragma once

#include <sys/types.h>

#include <filesystem>
#include <vector>

// Finds out whether what is written to a folder arrives on its disk. Writing goes
// to memory; that a stick lies about its size, or was pulled, is only told when
// the memory is brought to the disk.
class FlushPoint {
 public:
  // Opens the folder: what fails to arrive from now on is told by the next flush.
  // Throws std::filesystem::filesystem_error.
  explicit FlushPoint(const std::filesystem::path& folder);
  ~FlushPoint();
  FlushPoint(const FlushPoint&) = delete;
  FlushPoint& operator=(const FlushPoint&) = delete;

  // The same for a folder below it, which may be the root of another volume.
  // To be called before anything is written there, and before the first flush.
  void include(const std::filesystem::path& folder);

  // Brings all that was written to the volumes onto their disks. False where the
  // system cannot do that for a whole volume, or would not tell of failures:
  // every file is to be flushed by itself then. Throws
  // std::filesystem::filesystem_error when something did not arrive.
  bool flush() const;

 private:
  struct Volume {
    std::filesystem::path folder;
    int number = -1;
    dev_t device = 0;
  };

  std::vector<Volume> volumes_;
};
