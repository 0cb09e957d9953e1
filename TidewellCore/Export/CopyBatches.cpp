#include "TidewellCore/Export/CopyBatches.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/SaturatingAdd.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostFiles = 256;
constexpr std::int64_t mostBytes = 256 << 20;

// The plan gives no name that is taken, so a file there has come since, or has
// no content. It makes room for the copy, and so does a link, which is kept.
void moveIntoPlace(const fs::path& partial, const fs::path& dest) {
  if (Files::renameToFree(partial, dest)) return;
  const Files::Kind kind = Files::kindOf(dest);
  if (kind == Files::Kind::link) MakeRoom::at(dest);
  if (kind != Files::Kind::link && kind != Files::Kind::file) throw CopyError(FailureReason::placeTaken);
  Files::rename(partial, dest);
}

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

void CopyBatches::add(const ExportPlanner::PlannedCopy& copy, fs::path partial) {
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
  flushing_ = std::async(std::launch::async, [this, partials = std::move(partials)] { return flush(disk_, partials); });
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
    const auto& [copy, partial] = onTheirWay_[i];
    const auto failure =
        failures[i] ? failures[i] : failureOf([&place = *copy, &file = partial] { moveIntoPlace(file, place.dest); });
    if (failure) Files::removeQuietly(partial);
    settled.push_back({.copy = copy, .failure = failure});
  }
  onTheirWay_.clear();
  return settled;
}
