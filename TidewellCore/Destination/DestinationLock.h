#pragma once

#include <filesystem>

#include "TidewellCore/Platform/RootFolder.h"

// Keeps two exports from writing into one destination at the same time: each
// would take the other's working files for those of a crash. A destination
// called "messages" is locked with the folder above it, whose export would write
// into it. Held while it lives, and gone with the process; a file system without
// locks gives none.
// No link below a locked destination is followed.
class DestinationLock {
 public:
  // Throws TidewellError::ioFailure when another export holds it, and what
  // opening the folder, which must be there, reports.
  explicit DestinationLock(const std::filesystem::path& destination);
  ~DestinationLock();
  DestinationLock(const DestinationLock&) = delete;
  DestinationLock& operator=(const DestinationLock&) = delete;

  // Throws TidewellError::destinationNotWritable when the folder was removed, moved or replaced since:
  // what was copied is not where it belongs any more.
  void requireInPlace() const;

 private:
  void close() const;

  std::filesystem::path destination_;
  RootFolder root_;
  int folder_ = -1;
  int above_ = -1;  // of the folder above, when that is locked too
};
