#include "TidewellCore/Export/CopyBatch.h"

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

CopyBatch::~CopyBatch() {
  for (const Waiting& waiting : waiting_) Files::removeQuietly(waiting.partial);
}

void CopyBatch::add(const ExportPlanner::PlannedCopy& copy, fs::path partial) {
  waiting_.push_back({.copy = &copy, .partial = std::move(partial)});
  bytes_ = saturatingAdd(bytes_, copy.sourceSize);
}

bool CopyBatch::isFull() const { return waiting_.size() >= mostFiles || bytes_ >= mostBytes; }

std::vector<CopyBatch::Settled> CopyBatch::settle() {
  std::vector<Settled> settled;
  bool isFlushed = false;
  const std::exception_ptr lost = failureOf([&] { isFlushed = waiting_.empty() || disk_.flush(); });
  for (const Waiting& waiting : waiting_) {
    const std::exception_ptr failure = lost ? lost : failureOf([&] {
      if (!isFlushed) Files::flush(waiting.partial);
      moveIntoPlace(waiting.partial, waiting.copy->dest);
    });
    if (failure) Files::removeQuietly(waiting.partial);
    settled.push_back({.copy = waiting.copy, .failure = failure});
  }
  waiting_.clear();
  bytes_ = 0;
  return settled;
}
