#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <future>
#include <vector>

#include "TidewellCore/Export/SettledCopy.h"
#include "TidewellCore/Export/WrittenCopy.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/Platform/FlushPoint.h"
#include "TidewellCore/Platform/PartialFile.h"

// Copies that were written and wait under hidden names until their bytes are
// known to be on the disk: a file under its own name is whole, whatever happens
// to the power or the plug. While a thread of its own brings one batch onto the
// disk the next one is gathered. What still waits when it goes is removed.
class CopyBatches {
 public:
  // `disk` must outlive it. When `isCancelled` says so, no more flush is begun, and
  // files that wait for their own fail with TidewellError::cancelled; the rest is left to `settleInHaste`.
  CopyBatches(std::filesystem::path contentRoot, const FlushPoint& disk, CancellationCheck isCancelled = {})
      : contentRoot_(std::move(contentRoot)), disk_(disk), isCancelled_(std::move(isCancelled)) {}
  ~CopyBatches();
  CopyBatches(const CopyBatches&) = delete;
  CopyBatches& operator=(const CopyBatches&) = delete;

  void add(WrittenCopy copy);
  // Whether what was gathered is a batch: a flush takes long, and what waits for it is lost when the program is killed.
  bool isFull() const;

  // Begins to bring what was gathered onto the disk, and moves what was on its
  // way into its places, in the order it was added. Neither throws for what fails.
  std::vector<SettledCopy> turnOver();
  // Brings everything onto the disk and into its places.
  std::vector<SettledCopy> settle();
  // The same for somebody who wants to leave: what the disk takes within about a
  // second. It does not wait for more than that, but for a volume's flush that the
  // system has begun, which nothing breaks off. The rest is not told of, and is
  // removed when this goes.
  std::vector<SettledCopy> settleInHaste();

 private:
  struct Flushed {
    std::exception_ptr ofVolume;              // null unless the volume's flush failed
    std::vector<std::exception_ptr> ofFiles;  // one for each file; null for one that is on the disk
  };

  Flushed flush(const std::vector<std::filesystem::path>& partials) const;
  std::vector<SettledCopy> awaitFlush();
  // Into its place, unless it has failed before.
  SettledCopy moved(WrittenCopy& waiting, std::exception_ptr failure) const;

  std::filesystem::path contentRoot_;
  const FlushPoint& disk_;
  CancellationCheck isCancelled_;
  std::vector<WrittenCopy> gathered_;
  std::int64_t bytes_ = 0;  // of those
  // Of the flush before: it may have been told of what was gathered meanwhile, and nobody is told twice.
  std::exception_ptr lost_;
  std::vector<WrittenCopy> onTheirWay_;
  std::future<Flushed> flushing_;
  std::atomic<bool> isInHaste_ = false;
};
