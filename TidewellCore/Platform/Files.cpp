#include "TidewellCore/Platform/Files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>

#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/PartialFile.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/RootFolder.h"

namespace {

namespace fs = std::filesystem;

// Between two slices of a copy a cancellation is noticed.
constexpr std::size_t kernelSlice = 64 << 20;
constexpr std::size_t bufferSize = 256 << 10;

[[noreturn]] void fail(const char* what, const fs::path& from, const fs::path& to) {
  throw fs::filesystem_error(what, from, to, std::error_code(errno, std::generic_category()));
}

// Shares the blocks of both files where the file system can (Btrfs, XFS).
bool cloneBlocks(const FileDescriptor& from, const FileDescriptor& to) {
  return ::ioctl(to.number(), FICLONE, from.number()) == 0;
}

// Returns false when the kernel cannot copy between these two file systems, or
// not to the end: reading and writing on from there tells which side fails.
bool copyInKernel(const FileDescriptor& from, const FileDescriptor& to, std::int64_t size,
                  const CancellationCheck& isCancelled) {
  for (std::int64_t copied = 0; copied < size;) {
    throwIfCancelled(isCancelled);
    const ssize_t count = ::copy_file_range(from.number(), nullptr, to.number(), nullptr, kernelSlice, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) return copied > 0;
    copied += count;
  }
  return true;
}

void copyThroughBuffer(FileDescriptor& from, FileDescriptor& to, const CancellationCheck& isCancelled) {
  Bytes buffer(bufferSize);
  while (const std::size_t count = from.read(buffer)) {
    throwIfCancelled(isCancelled);
    to.write(ByteView(buffer).first(count));
  }
}

// The system's own times hold dates that std::filesystem's clock overflows on.
timespec modificationTime(const fs::path& path) {
  struct stat status {};
  const auto look = [&](int folder, const char* name) { return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW); };
  if (Place(path).with(look) != 0) fail("Could not read the file's date", path, {});
  return status.st_mtim;
}

void setModificationTime(const fs::path& path, timespec modified) {
  timespec unchanged{};
  unchanged.tv_nsec = UTIME_OMIT;
  const std::array<timespec, 2> times{unchanged, modified};
  const auto set = [&](int folder, const char* name) {
    return ::utimensat(folder, name, times.data(), AT_SYMLINK_NOFOLLOW);
  };
  if (Place(path).with(set) == 0) return;
  // A drive that takes no date, or not this one, takes the file all the same.
  const bool isRefusal = errno == EINVAL || errno == EPERM || errno == ENOTSUP;
  if (!isRefusal) fail("Could not set the file's date", path, {});
}

bool holds(const fs::path& path, std::string_view content) {
  const auto length = static_cast<std::int64_t>(content.size());
  if (Files::regularFileSize(path) != length) return false;
  try {
    return textOf(Files::read(path, length)) == content;
  } catch (const fs::filesystem_error&) {
    return false;
  }
}

}  // namespace

Bytes Files::read(const fs::path& path, std::int64_t limit) {
  FileDescriptor file = FileDescriptor::openForReading(path);
  const std::int64_t size = file.size();
  if (size > limit) {
    throw fs::filesystem_error("The file is too large to be read", path,
                               std::make_error_code(std::errc::file_too_large));
  }
  Bytes content(static_cast<std::size_t>(size));
  content.resize(file.read(content));
  return content;
}

std::optional<Bytes> Files::readIfThere(const fs::path& path, std::int64_t limit) {
  if (kindOf(path) != Kind::file || regularFileSize(path).value_or(0) > limit) return std::nullopt;
  return read(path, limit);
}

void Files::writeAtomically(const fs::path& path, std::string_view content) {
  PartialFile partial(path);
  FileDescriptor file = FileDescriptor::create(partial.path());
  file.write(bytesOf(content));
  file.close();
  Files::flush(partial.path());
  Files::rename(partial.path(), path);
  partial.release();
}

bool Files::writeWhenDifferent(const fs::path& path, std::string_view content) {
  if (holds(path, content)) return false;
  writeAtomically(path, content);
  return true;
}

void Files::flush(const fs::path& path) {
  constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int number = Place(path).with([](int folder, const char* name) { return ::openat(folder, name, flags); });
  const bool isFlushed = number >= 0 && ::fsync(number) == 0;
  const int error = errno;
  if (number >= 0) ::close(number);
  errno = error;
  if (!isFlushed) fail("Could not write", path, {});
}

std::int64_t Files::copy(const fs::path& from, const fs::path& to, const CancellationCheck& isCancelled,
                         FileAccess access) {
  FileDescriptor source = FileDescriptor::openForReading(from);
  FileDescriptor target = FileDescriptor::create(to, access);
  target.requireLength(source.size());
  if (!cloneBlocks(source, target) && !copyInKernel(source, target, source.size(), isCancelled)) {
    copyThroughBuffer(source, target, isCancelled);
  }
  const std::int64_t copied = target.size();
  target.close();
  return copied;
}

bool Files::moveToFree(const fs::path& from, const fs::path& to) {
  try {
    return renameToFree(from, to);
  } catch (const fs::filesystem_error& error) {
    if (error.code() != std::errc::cross_device_link || !isRegularFile(from)) throw;
  }
  PartialFile partial(to);
  if (Files::copy(from, partial.path()) != regularFileSize(from)) {
    throw fs::filesystem_error("The file changed while it was moved", from, to,
                               std::make_error_code(std::errc::io_error));
  }
  setModificationTime(partial.path(), modificationTime(from));
  Files::flush(partial.path());  // the only other copy is about to be removed
  const bool isMoved = renameToFree(partial.path(), to);
  Files::remove(isMoved ? from : partial.path());
  partial.release();
  return isMoved;
}

bool Files::haveSameBytes(const fs::path& a, const fs::path& b) {
  FileDescriptor first = FileDescriptor::openForReading(a);
  FileDescriptor second = FileDescriptor::openForReading(b);
  if (first.size() != second.size()) return false;
  Bytes firstBytes(bufferSize);
  Bytes secondBytes(bufferSize);
  while (const std::size_t count = first.read(firstBytes)) {
    if (second.read(secondBytes) != count) return false;
    if (!std::equal(firstBytes.begin(), firstBytes.begin() + static_cast<std::ptrdiff_t>(count), secondBytes.begin())) {
      return false;
    }
  }
  return true;
}

void Files::setModificationDate(const fs::path& path, Date date) {
  // Beyond this many seconds no file system keeps a date; the kernel cuts the rest to what it can hold.
  constexpr double furthest = 1e11;
  const double seconds = std::clamp(unixTime(date), -furthest, furthest);
  const double whole = std::floor(seconds);
  timespec modified{};
  modified.tv_sec = static_cast<time_t>(whole);
  modified.tv_nsec = std::min(static_cast<long>((seconds - whole) * 1e9), 999'999'999L);
  setModificationTime(path, modified);
}

std::string Files::partialName() {
  static std::atomic<unsigned> counter = 0;
  return fmt::format("{}{}-{}", partialPrefix, ::getpid(), ++counter);
}
