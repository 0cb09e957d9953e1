#include "TidewellCore/Export/CopyAhead.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <variant>

#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Platform/FailureOf.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/TidewellError.h"

using ExportPlanner::PlannedCopy;

namespace {

// More than that only wait for the disk, or keep its head moving.
constexpr unsigned mostThreads = 4;

bool isOfFullDisk(const std::exception_ptr& failure) try {
  std::rethrow_exception(failure);
} catch (const std::exception& error) {
  return EarlyEnd::isFullDisk(error);
}

}  // namespace

CopyAhead::CopyAhead(std::span<const PlannedCopy> copies, Write write) : write_(std::move(write)) {
  for (const PlannedCopy& copy : copies) {
    if (std::holds_alternative<ExportPlanner::Restored>(copy.fate)) copies_.push_back(&copy);
  }
}

CopyAhead::~CopyAhead() { stop(); }

WrittenCopy CopyAhead::take(const PlannedCopy& copy, const CancellationCheck& isCancelled) {
  if (isEnding_) throw TidewellError::cancelled();
  if (!std::exchange(hasStarted_, true)) start();
  if (threads_.empty()) return write_(copy, isCancelled);
  std::unique_lock lock(mutex_);
  if (copies_.at(taken_) != &copy) throw std::logic_error("a copy was taken out of its turn");
  openMore();
  Slot& slot = slotOf(taken_);
  constexpr auto patience = std::chrono::milliseconds(50);
  while (!wasWritten_.wait_for(lock, patience, [&] { return slot.isDone(); })) {
    lock.unlock();
    isEnding_ = isCancelled && isCancelled();
    if (isEnding_) throw TidewellError::cancelled();
    lock.lock();
  }
  ++taken_;
  bytesAhead_ -= copy.sourceSize;
  if (slot.failure) {
    const std::exception_ptr failure = std::exchange(slot.failure, nullptr);
    lock.unlock();
    if (!isOfFullDisk(failure)) std::rethrow_exception(failure);
    stop();
    return write_(copy, isCancelled);
  }
  WrittenCopy file = *std::move(slot.file);
  slot.file.reset();
  return file;
}

void CopyAhead::start() try {
  const std::size_t count = std::min<std::size_t>({copies_.size(), std::thread::hardware_concurrency(), mostThreads});
  while (threads_.size() < count) threads_.emplace_back([this] { work(); });
} catch (const std::system_error&) {
  // Where the system gives no more threads, those that are there do the work, or the caller's.
}

void CopyAhead::stop() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  wasOpened_.notify_all();
  threads_.clear();
  slots_ = std::vector<Slot>(mostAhead);
  isEnding_ = false;
}

void CopyAhead::work() {
  const CancellationCheck isUnwanted = [this] { return isEnding_.load(); };
  std::unique_lock lock(mutex_);
  while (true) {
    wasOpened_.wait(lock, [this] { return isEnding_ || begun_ < opened_; });
    if (isEnding_) return;
    const std::size_t number = begun_++;
    lock.unlock();
    std::optional<WrittenCopy> file;
    auto failure = failureOf([&] { file.emplace(write_(*copies_[number], isUnwanted)); });
    lock.lock();
    Slot& slot = slotOf(number);
    if (file) slot.file.emplace(*std::move(file));
    slot.failure = std::move(failure);
    if (number == taken_) wasWritten_.notify_one();
  }
}

// Half of what may be ahead at once: each time costs the threads a call.
void CopyAhead::openMore() {
  if (opened_ > taken_ + mostAhead / 2) return;
  const auto mayBeBegun = [this] {
    return opened_ == taken_ || (opened_ < taken_ + mostAhead && bytesAhead_ < mostBytesAhead);
  };
  while (opened_ < copies_.size() && mayBeBegun()) {
    bytesAhead_ = saturatingAdd(bytesAhead_, copies_[opened_]->sourceSize);
    ++opened_;
  }
  wasOpened_.notify_all();
}
