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
#include "TidewellCore/Platform/PathText.h"

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
  if (::lstat(path.c_str(), &status) != 0) fail("Could not read the file's date", path, {});
  return status.st_mtim;
}

void setModificationTime(const fs::path& path, timespec modified) {
  timespec unchanged{};
  unchanged.tv_nsec = UTIME_OMIT;
  const std::array<timespec, 2> times{unchanged, modified};
  if (::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
    fail("Could not set the file's date", path, {});
  }
}

// Waits until the file's bytes are on the disk.
void flush(const fs::path& path) {
  const FileDescriptor file = FileDescriptor::openForReading(path);
  if (::fsync(file.number()) != 0) file.fail("Could not write the file");
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

bool Files::exists(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

bool Files::isRegularFile(const fs::path& path) { return regularFileSize(path).has_value(); }

std::optional<std::int64_t> Files::regularFileSize(const fs::path& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_size;
}

bool Files::isFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool Files::isWithin(const fs::path& path, const fs::path& folder) {
  const auto whole = [](const fs::path& place) { return fs::weakly_canonical(fs::absolute(place)); };
  const fs::path relative = whole(path).lexically_relative(whole(folder));
  return !relative.empty() && *relative.begin() != "..";
}

std::vector<Files::Entry> Files::list(const fs::path& folder) {
  std::vector<Entry> entries;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    std::error_code ignored;
    entries.push_back({.name = PathText::text(entry.path().filename()), .isFolder = entry.is_directory(ignored)});
  }
  std::ranges::sort(entries, {}, &Entry::name);
  return entries;
}

std::vector<Files::Entry> Files::listVisible(const fs::path& folder) {
  try {
    std::vector<Entry> entries = list(folder);
    std::erase_if(entries, [](const Entry& entry) { return entry.name.starts_with('.'); });
    return entries;
  } catch (const fs::filesystem_error&) {
    return {};
  }
}

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

void Files::writeAtomically(const fs::path& path, std::string_view content) {
  const fs::path partial = path.parent_path() / partialName();
  try {
    FileDescriptor file = FileDescriptor::create(partial);
    file.write(bytesOf(content));
    file.close();
    flush(partial);
    fs::rename(partial, path);
  } catch (...) {
    std::error_code ignored;
    fs::remove(partial, ignored);
    throw;
  }
}

bool Files::writeWhenDifferent(const fs::path& path, std::string_view content) {
  if (holds(path, content)) return false;
  writeAtomically(path, content);
  return true;
}

std::int64_t Files::copy(const fs::path& from, const fs::path& to, const CancellationCheck& isCancelled,
                         FileAccess access) {
  FileDescriptor source = FileDescriptor::openForReading(from);
  FileDescriptor target = FileDescriptor::create(to, access);
  if (!cloneBlocks(source, target) && !copyInKernel(source, target, source.size(), isCancelled)) {
    copyThroughBuffer(source, target, isCancelled);
  }
  const std::int64_t copied = target.size();
  target.close();
  return copied;
}

bool Files::renameToFree(const fs::path& from, const fs::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  if (errno != EINVAL && errno != ENOSYS) fail("Could not move the file", from, to);
  // This file system knows no such renaming: look first, then rename.
  if (fs::exists(fs::symlink_status(to))) return false;
  fs::rename(from, to);
  return true;
}

bool Files::moveToFree(const fs::path& from, const fs::path& to) {
  try {
    return renameToFree(from, to);
  } catch (const fs::filesystem_error& error) {
    if (error.code() != std::errc::cross_device_link || !isRegularFile(from)) throw;
  }
  const fs::path partial = to.parent_path() / partialName();
  try {
    if (Files::copy(from, partial) != regularFileSize(from)) {
      throw fs::filesystem_error("The file changed while it was moved", from, to,
                                 std::make_error_code(std::errc::io_error));
    }
    setModificationTime(partial, modificationTime(from));
    flush(partial);  // the only other copy is about to be removed
    if (renameToFree(partial, to)) return fs::remove(from);
  } catch (...) {
    std::error_code ignored;
    fs::remove(partial, ignored);
    throw;
  }
  fs::remove(partial);
  return false;
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
