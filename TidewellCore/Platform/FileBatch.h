#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/FlushPoint.h"
#include "TidewellCore/Platform/PartialFile.h"

// Gives a file a new content, unless it has it already; now, or together with others. Throws what writing reports.
using FileWriter = std::function<void(const std::filesystem::path& path, std::string_view content)>;

// Files that get new contents together: they stand beside their places until all of them are on the disk, which takes
// one flush of a volume instead of one for each. Readers see the old content or the new, never a part. What was not
// settled when this goes is dropped.
class FileBatch {
 public:
  struct Failure {
    std::filesystem::path path;
    std::exception_ptr reason;
  };

  // `disk` is of the volumes of the files, and must outlive it.
  explicit FileBatch(const FlushPoint& disk) : disk_(disk) {}

  // A path is written once before it is settled.
  void write(const std::filesystem::path& path, std::string_view content);
  // Whether it is time to settle: a flush takes long, and what waits for it is lost when the program is killed.
  bool isFull() const;
  // Brings all that was written onto the disk and into its places; tells what failed.
  std::vector<Failure> settle();

 private:
  struct Waiting {
    std::filesystem::path path;
    PartialFile partial;
  };

  const FlushPoint& disk_;
  std::vector<Waiting> waiting_;
  std::int64_t bytes_ = 0;
};
