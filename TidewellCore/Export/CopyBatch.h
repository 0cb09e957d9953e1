#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <vector>

#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Platform/FlushPoint.h"

// Copies that were written and wait under hidden names until their bytes are
// known to be on the disk: a file under its own name is whole, whatever happens
// to the power or the plug. What still waits when the batch goes is removed.
class CopyBatch {
 public:
  // Both must outlive it.
  explicit CopyBatch(const FlushPoint& disk) : disk_(disk) {}
  ~CopyBatch();
  CopyBatch(const CopyBatch&) = delete;
  CopyBatch& operator=(const CopyBatch&) = delete;

  // `copy` must stay where it is until it is settled.
  void add(const ExportPlanner::PlannedCopy& copy, std::filesystem::path partial);
  // Whether it is time to settle: a flush takes long, and what waits for it is lost when the program is killed.
  bool isFull() const;

  struct Settled {
    const ExportPlanner::PlannedCopy* copy = nullptr;
    std::exception_ptr failure;  // null when the copy stands in its place
  };
  // Brings all copies onto the disk and into their places, in the order they were
  // added. The batch is empty afterwards. Does not throw for what fails.
  std::vector<Settled> settle();

 private:
  struct Waiting {
    const ExportPlanner::PlannedCopy* copy = nullptr;
    std::filesystem::path partial;
  };

  const FlushPoint& disk_;
  std::vector<Waiting> waiting_;
  std::int64_t bytes_ = 0;
};
