#pragma once

#include <filesystem>

// Finds out whether what is written to a volume arrives on its disk. Writing goes
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

  // Brings all that was written to the volume onto the disk. False where the
  // system cannot do that for a whole volume, or would not tell of failures:
  // every file is to be flushed by itself then. Throws
  // std::filesystem::filesystem_error when something did not arrive.
  bool flush() const;

 private:
  std::filesystem::path folder_;
  int number_ = -1;
};
