#include "TidewellCore/Export/CopyBatches.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "TidewellCore/Export/CopyPlace.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/SaturatingAdd.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostFiles = 256;
constexpr std::int64_t mostBytes = 256 << 20;

template <typename Work>
std::exception_ptr failureOf(Work work) {
  try {
    work();
    return nullptr;
  } catch (...) {
    return std::current_exception();
  }
}

}  // namespace

CopyBatches::~CopyBatches() {
  if (flushing_.valid()) flushing_.wait();
  for (const auto* batch : {&gathered_, &onTheirWay_}) {
    for (const Waiting& waiting : *batch) Files::removeQuietly(waiting.partial);
  }
}

void CopyBatches::add(ExportPlanner::PlannedCopy& copy, fs::path partial) {
  gathered_.push_back({.copy = &copy, .partial = std::move(partial)});
  bytes_ = saturatingAdd(bytes_, copy.sourceSize);
}

bool CopyBatches::isFull() const { return gathered_.size() >= mostFiles || bytes_ >= mostBytes; }

std::vector<CopyBatches::Settled> CopyBatches::turnOver() {
  std::vector<Settled> settled = awaitFlush();
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
  for (const Waiting& waiting : onTheirWay_) partials.push_back(waiting.partial);
  // Deferred where the system gives no thread: flushed when it is waited for, by a copy that no failed start took.
  const auto work = [this, partials] { return flush(disk_, partials); };
  flushing_ = std::async(std::launch::async | std::launch::deferred, work);
  return settled;
}

std::vector<CopyBatches::Settled> CopyBatches::settle() {
  std::vector<Settled> settled = turnOver();
  std::ranges::move(awaitFlush(), std::back_inserter(settled));
  return settled;
}

CopyBatches::Flushed CopyBatches::flush(const FlushPoint& disk, const std::vector<fs::path>& partials) {
  bool isWhole = false;
  const auto lost = failureOf([&] { isWhole = disk.flush(); });
  Flushed flushed{.ofVolume = lost, .ofFiles = std::vector(partials.size(), lost)};
  if (lost || isWhole) return flushed;
  std::ranges::transform(partials, flushed.ofFiles.begin(),
                         [](const fs::path& partial) { return failureOf([&] { Files::flush(partial); }); });
  return flushed;
}

std::vector<CopyBatches::Settled> CopyBatches::awaitFlush() {
  std::vector<Settled> settled;
  if (!flushing_.valid()) return settled;
  const auto [ofVolume, failures] = flushing_.get();
  lost_ = ofVolume;
  for (std::size_t i = 0; i < onTheirWay_.size(); ++i) {
    const fs::path& partial = onTheirWay_[i].partial;
    Settled one{.copy = onTheirWay_[i].copy, .failure = failures[i]};
    if (!one.failure) one.failure = failureOf([&] { one.wasThere = !CopyPlace::give(*one.copy, partial); });
    if (one.failure || one.wasThere) Files::removeQuietly(partial);
    settled.push_back(std::move(one));
  }
  onTheirWay_.clear();
  return settled;
}
