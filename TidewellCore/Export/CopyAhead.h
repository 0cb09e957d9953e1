#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Export/WrittenCopy.h"
#include "TidewellCore/Platform/Cancellation.h"

// Writes the files that are asked for one after another before they are asked for, on a thread for each core: what is
// seen of it is as if they were written one after another. Not far ahead, for what is written is lost in a kill. Where
// the disk is full, what is ahead gives way to the file whose turn it is.
class CopyAhead {
 public:
  // Writes the file of a copy and returns it; called on any thread, several times at once. The check tells that the
  // file is not wanted any more.
  using Write = std::function<WrittenCopy(const ExportPlanner::PlannedCopy& copy, const CancellationCheck&)>;

  // Those of `copies`, which must outlive it, that are restored from the backup.
  CopyAhead(std::span<const ExportPlanner::PlannedCopy> copies, Write write);
  // Waits for the files that are being written, and drops what was not asked for.
  ~CopyAhead();
  CopyAhead(const CopyAhead&) = delete;
  CopyAhead& operator=(const CopyAhead&) = delete;

  // Waits for the file of the next copy that is restored, which this must be. Throws what writing it threw, and
  // TidewellError::cancelled.
  WrittenCopy take(const ExportPlanner::PlannedCopy& copy, const CancellationCheck& isCancelled);

 private:
  struct Slot {
    std::optional<WrittenCopy> file;
    std::exception_ptr failure;

    bool isDone() const { return file || failure; }
  };

  static constexpr std::size_t mostAhead = 128;
  static constexpr std::int64_t mostBytesAhead = 64 << 20;

  void start();
  void stop();
  void work();
  void openMore();  // with the mutex held
  Slot& slotOf(std::size_t number) { return slots_[number % mostAhead]; }

  std::vector<const ExportPlanner::PlannedCopy*> copies_;  // in the order in which they are taken
  const Write write_;
  std::atomic<bool> isEnding_ = false;
  bool hasStarted_ = false;  // or tried to; where that failed once, all is written by the caller

  std::mutex mutex_;  // of all below
  std::condition_variable wasOpened_;
  std::condition_variable wasWritten_;
  std::size_t taken_ = 0;   // how many were
  std::size_t opened_ = 0;  // how many may be begun
  std::size_t begun_ = 0;
  std::int64_t bytesAhead_ = 0;  // of those that may be begun and were not taken
  std::vector<Slot> slots_{mostAhead};

  std::vector<std::jthread> threads_;  // last, so that they end before what they use
};
