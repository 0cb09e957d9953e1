#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <future>
#include <vector>

#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Platform/FlushPoint.h"

// Copies that were written and wait under hidden names until their bytes are
// known to be on the disk: a file under its own name is whole, whatever happens
// to the power or the plug. While a thread of its own brings one batch onto the
// disk the next one is gathered. What still waits when it goes is removed.
class CopyBatches {
 public:
  // Both must outlive it.
  explicit CopyBatches(const FlushPoint& disk) : disk_(disk) {}
  ~CopyBatches();
  CopyBatches(const CopyBatches&) = delete;
  CopyBatches& operator=(const CopyBatches&) = delete;

  // `copy` must stay where it is until it is settled, and is told the place that it is really given.
  void add(ExportPlanner::PlannedCopy& copy, std::filesystem::path partial);
  // Whether what was gathered is a batch: a flush takes long, and what waits for it is lost when the program is killed.
  bool isFull() const;

  struct Settled {
    ExportPlanner::PlannedCopy* copy = nullptr;
    std::exception_ptr failure;  // null when the copy stands in its place
    bool wasThere = false;       // put there by somebody else meanwhile
  };
  // Begins to bring what was gathered onto the disk, and moves what was on its
  // way into its places, in the order it was added. Neither throws for what fails.
  std::vector<Settled> turnOver();
  // Brings everything onto the disk and into its places.
  std::vector<Settled> settle();

 private:
  struct Waiting {
    ExportPlanner::PlannedCopy* copy = nullptr;
    std::filesystem::path partial;
  };
  struct Flushed {
    std::exception_ptr ofVolume;              // null unless the volume's flush failed
    std::vector<std::exception_ptr> ofFiles;  // one for each file; null for one that is on the disk
  };

  static Flushed flush(const FlushPoint& disk, const std::vector<std::filesystem::path>& partials);
  std::vector<Settled> awaitFlush();

  const FlushPoint& disk_;
  std::vector<Waiting> gathered_;
  std::int64_t bytes_ = 0;  // of those
  // Of the flush before: it may have been told of what was gathered meanwhile, and nobody is told twice.
  std::exception_ptr lost_;
  std::vector<Waiting> onTheirWay_;
  std::future<Flushed> flushing_;
};
