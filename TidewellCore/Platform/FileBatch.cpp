#include "TidewellCore/Platform/FileBatch.h"

#include <utility>

#include "TidewellCore/Platform/FailureOf.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostFiles = 256;
constexpr std::int64_t mostBytes = 64 << 20;

}  // namespace

void FileBatch::write(const fs::path& path, std::string_view content) {
  if (Files::holds(path, content)) return;
  if (Files::kindOf(path) == Files::Kind::folder) return Files::writeAtomically(path, content);  // which tells why not
  PartialFile partial(path);
  FileDescriptor file = FileDescriptor::create(partial.path());
  file.write(bytesOf(content));
  file.close();
  waiting_.push_back({.path = path, .partial = std::move(partial)});
  bytes_ += static_cast<std::int64_t>(content.size());
}

bool FileBatch::isFull() const { return waiting_.size() >= mostFiles || bytes_ >= mostBytes; }

std::vector<FileBatch::Failure> FileBatch::settle() {
  std::vector<Waiting> settled = std::exchange(waiting_, {});
  bytes_ = 0;
  if (settled.empty()) return {};
  bool isWhole = false;
  const std::exception_ptr lost = failureOf([&] { isWhole = disk_.flush(); });
  std::vector<Failure> failures;
  for (Waiting& file : settled) {
    const auto place = [&] {
      if (lost) std::rethrow_exception(lost);
      if (!isWhole) Files::flush(file.partial.path());
      Files::rename(file.partial.path(), file.path);
      file.partial.release();
    };
    if (auto failure = failureOf(place)) failures.push_back({.path = file.path, .reason = std::move(failure)});
  }
  return failures;
}
