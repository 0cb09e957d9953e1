#include "TidewellCore/Export/CopyBatches.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "TidewellCore/Export/CopyPlace.h"
#include "TidewellCore/Platform/FailureOf.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostFiles = 256;
constexpr std::int64_t mostBytes = 256 << 20;
// A file that a slow disk takes at once, or nearly so.
constexpr std::int64_t largestInHaste = 1 << 20;

}  // namespace

CopyBatches::~CopyBatches() {
  if (flushing_.valid()) flushing_.wait();
}

void CopyBatches::add(WrittenCopy copy) {
  bytes_ = saturatingAdd(bytes_, copy.copy->sourceSize);
  gathered_.push_back(std::move(copy));
}

bool CopyBatches::isFull() const { return gathered_.size() >= mostFiles || bytes_ >= mostBytes; }

std::vector<SettledCopy> CopyBatches::turnOver() {
  std::vector<SettledCopy> settled = awaitFlush();
  if (isInHaste_) return settled;
  onTheirWay_ = std::exchange(gathered_, {});
  bytes_ = 0;
  if (onTheirWay_.empty()) return settled;
  if (lost_) {
    std::promise<Flushed> failed;
    failed.set_value({.ofFiles = std::vector(onTheirWay_.size(), std::exchange(lost_, nullptr))});
    flushing_ = failed.get_future();
    return settled;
  }
  std::vector<fs::path> partials;
  for (const WrittenCopy& waiting : onTheirWay_) partials.push_back(waiting.partial.path());
  // Deferred where the system gives no thread: flushed when it is waited for, by a copy that no failed start took.
  const auto work = [this, partials] { return flush(partials); };
  flushing_ = std::async(std::launch::async | std::launch::deferred, work);
  return settled;
}

std::vector<SettledCopy> CopyBatches::settle() {
  std::vector<SettledCopy> settled = turnOver();
  std::ranges::move(awaitFlush(), std::back_inserter(settled));
  return settled;
}

std::vector<SettledCopy> CopyBatches::settleInHaste() {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  isInHaste_ = true;
  std::vector<SettledCopy> settled = awaitFlush();
  for (WrittenCopy& waiting : gathered_) {
    if (lost_ || std::chrono::steady_clock::now() >= end) break;
    if (waiting.copy->sourceSize > largestInHaste) continue;
    settled.push_back(moved(waiting, failureOf([&] { Files::flush(waiting.partial.path()); })));
  }
  return settled;
}

CopyBatches::Flushed CopyBatches::flush(const std::vector<fs::path>& partials) const {
  bool isWhole = false;
  const auto lost = failureOf([&] { isWhole = disk_.flush(); });
  Flushed flushed{.ofVolume = lost, .ofFiles = std::vector(partials.size(), lost)};
  if (lost || isWhole) return flushed;
  const auto flushFile = [this](const fs::path& partial) {
    if (isInHaste_) throw TidewellError::cancelled();
    Files::flush(partial);
  };
  std::ranges::transform(partials, flushed.ofFiles.begin(),
                         [&](const fs::path& partial) { return failureOf([&] { flushFile(partial); }); });
  return flushed;
}

std::vector<SettledCopy> CopyBatches::awaitFlush() {
  std::vector<SettledCopy> settled;
  if (!flushing_.valid()) return settled;
  constexpr auto patience = std::chrono::milliseconds(100);
  while (flushing_.wait_for(patience) == std::future_status::timeout) {
    if (isCancelled_ && isCancelled_()) isInHaste_ = true;
  }
  const auto [ofVolume, failures] = flushing_.get();
  lost_ = ofVolume;
  for (std::size_t i = 0; i < onTheirWay_.size(); ++i) {
    settled.push_back(moved(onTheirWay_[i], failures[i]));
  }
  onTheirWay_.clear();
  return settled;
}

SettledCopy CopyBatches::moved(WrittenCopy& waiting, std::exception_ptr failure) const {
  SettledCopy settled =
      failure ? SettledCopy{.copy = waiting.copy, .place = waiting.copy->dest, .failure = std::move(failure)}
              : CopyPlace::give(*waiting.copy, contentRoot_, waiting.partial.path());
  settled.isDoubtful = waiting.isDoubtful;
  if (settled.failure || settled.wasThere) return settled;
  waiting.partial.release();
  return settled;
}
