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

// Shares the blocks of both files where the file system can (Btrfs, XFS). Of small files they are shared by
// copyInKernel, too, and asking first takes as long as copying.
bool cloneBlocks(const FileDescriptor& from, const FileDescriptor& to, std::int64_t size) {
  constexpr std::int64_t smallest = 1 << 20;
  return size >= smallest && ::ioctl(to.number(), FICLONE, from.number()) == 0;
}

// Returns how many bytes were copied; nothing when the kernel cannot copy between these two file systems, or
// not to the end: reading and writing on from there tells which side fails.
std::optional<std::int64_t> copyInKernel(const FileDescriptor& from, const FileDescriptor& to, std::int64_t size,
                                         const CancellationCheck& isCancelled) {
  std::int64_t copied = 0;
  while (copied < size) {
    throwIfCancelled(isCancelled);
    const ssize_t count = ::copy_file_range(from.number(), nullptr, to.number(), nullptr, kernelSlice, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 || (count == 0 && copied == 0)) return std::nullopt;
    if (count == 0) break;
    copied += count;
  }
  return copied;
}

void copyThroughBuffer(FileDescriptor& from, FileDescriptor& to, const CancellationCheck& isCancelled) {
  Bytes buffer(bufferSize);
  while (const std::size_t count = from.read(buffer)) {
    throwIfCancelled(isCancelled);
    to.write(ByteView(buffer).first(count));
  }
}

// Returns how many bytes the target has then.
std::int64_t copyBytes(FileDescriptor& from, FileDescriptor& to, const CancellationCheck& isCancelled) {
  const std::int64_t size = from.size();
  to.requireLength(size);
  if (!cloneBlocks(from, to, size)) {
    const auto copied = size > 0 ? copyInKernel(from, to, size, isCancelled) : std::nullopt;
    if (copied) return *copied;
    copyThroughBuffer(from, to, isCancelled);
  }
  return to.size();
}

// The system's own times hold dates that std::filesystem's clock overflows on.
timespec modificationTime(const fs::path& path) {
  struct stat status {};
  const auto look = [&](int folder, const char* name) { return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW); };
  if (Place(path).with(look) != 0) fail("Could not read the file's date", path, {});
  return status.st_mtim;
}

// The times of a file that was not looked at since it was changed.
std::array<timespec, 2> timesOf(timespec modified) {
  timespec unchanged{};
  unchanged.tv_nsec = UTIME_OMIT;
  return {unchanged, modified};
}

// `answer` is of the call that set it. A drive that takes no date, or not this one, takes the file all the same.
void requireDate(int answer, const fs::path& path) {
  const bool isRefusal = errno == EINVAL || errno == EPERM || errno == ENOTSUP;
  if (answer != 0 && !isRefusal) fail("Could not set the file's date", path, {});
}

void setModificationTime(const fs::path& path, timespec modified) {
  const std::array<timespec, 2> times = timesOf(modified);
  const auto set = [&](int folder, const char* name) {
    return ::utimensat(folder, name, times.data(), AT_SYMLINK_NOFOLLOW);
  };
  requireDate(Place(path).with(set), path);
}

timespec timeOf(Date date) {
  // Beyond this many seconds no file system keeps a date; the kernel cuts the rest to what it can hold.
  constexpr double furthest = 1e11;
  const double seconds = std::clamp(unixTime(date), -furthest, furthest);
  const double whole = std::floor(seconds);
  timespec time{};
  time.tv_sec = static_cast<time_t>(whole);
  time.tv_nsec = std::min(static_cast<long>((seconds - whole) * 1e9), 999'999'999L);
  return time;
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

bool Files::holds(const fs::path& path, std::string_view content) {
  const auto length = static_cast<std::int64_t>(content.size());
  if (regularFileSize(path) != length) return false;
  try {
    return textOf(read(path, length)) == content;
  } catch (const fs::filesystem_error&) {
    return false;
  }
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
  const std::int64_t copied = copyBytes(source, target, isCancelled);
  target.close();
  return copied;
}

std::int64_t Files::copy(const fs::path& from, FileDescriptor& to, const CancellationCheck& isCancelled) {
  FileDescriptor source = FileDescriptor::openForReading(from);
  return copyBytes(source, to, isCancelled);
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

Bytes Files::lastBytes(const fs::path& path, std::int64_t count) {
  FileDescriptor file = FileDescriptor::openForReading(path);
  const std::int64_t size = file.size();
  Bytes bytes(static_cast<std::size_t>(std::min(size, count)));
  file.seek(size - static_cast<std::int64_t>(bytes.size()));
  bytes.resize(file.read(bytes));
  return bytes;
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

void Files::setModificationDate(const fs::path& path, Date date) { setModificationTime(path, timeOf(date)); }

void Files::setModificationDate(const FileDescriptor& file, Date date) {
  const std::array<timespec, 2> times = timesOf(timeOf(date));
  requireDate(::futimens(file.number(), times.data()), file.path());
}

std::string Files::partialName() {
  static std::atomic<unsigned> counter = 0;
  return fmt::format("{}{}-{}", partialPrefix, ::getpid(), ++counter);
}
