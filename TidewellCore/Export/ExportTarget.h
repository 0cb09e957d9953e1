#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Platform/FlushPoint.h"
#include "TidewellCore/PortableNames.h"

// A destination that was made ready for one export, and is locked for it. Its
// failures are TidewellError::destinationNotWritable and ::ioFailure; a full
// disk is std::filesystem::filesystem_error.
class ExportTarget {
 public:
  // Looks at the content root of a destination that is locked, before anything there is changed; it may not be there.
  // What it throws is passed on.
  using Check = std::function<void(const std::filesystem::path& contentRoot)>;

  // Makes the folder where it is missing, locks it, has it checked and prepares its content root.
  // Nothing is exported into a backup, be it another than the one that is read.
  ExportTarget(const std::filesystem::path& destination, const std::filesystem::path& backup, const Check& check);

  // One that holds an export, to be written to again: locks it and leaves it as it is, but for working files of
  // runs that were ended.
  static ExportTarget standing(const std::filesystem::path& destination);

  const std::filesystem::path& destination() const { return destination_; }
  const std::filesystem::path& contentRoot() const { return contentRoot_; }
  const DestinationLock& lock() const { return lock_; }
  const FlushPoint& disk() const { return disk_; }
  // What stands in its content root, to be written to in the names that its drive takes. Throws as
  // DestinationIndex::load.
  DestinationIndex index(const CancellationCheck& isCancelled) const;

  void requireSpace(std::int64_t bytes) const;
  // Returns when all that was written, the names in its folders included, is on
  // the disk. `chatFolders` are in the content root; an empty name is none.
  void flush(const std::vector<std::string>& chatFolders) const;

 private:
  struct Standing {};
  ExportTarget(const std::filesystem::path& destination, Standing);
  void includeVolumes();

  std::filesystem::path destination_;
  DestinationLock lock_;
  FlushPoint disk_;
  std::filesystem::path contentRoot_;
  NameForm nameForm_ = NameForm::plain;
};
