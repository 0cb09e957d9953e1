#include "TidewellCore/Platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "TidewellCore/Platform/RootFolder.h"

namespace {

namespace fs = std::filesystem;

[[noreturn]] void failWith(const char* what, const fs::path& path, int error) {
  throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

}  // namespace

FileDescriptor FileDescriptor::openForReading(const fs::path& path) {
  // O_NONBLOCK keeps a FIFO from blocking the open; on a regular file it means nothing.
  constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const auto open = [](int folder, const char* name) { return ::openat(folder, name, flags); };
  FileDescriptor file(Place(path).with(open), path);
  if (file.number_ < 0) file.fail("Could not open the file");
  struct stat status {};
  if (::fstat(file.number_, &status) != 0) file.fail("Could not open the file");
  if (!S_ISREG(status.st_mode)) failWith("This is not a regular file", path, EINVAL);
  return file;
}

FileDescriptor FileDescriptor::create(const fs::path& path, FileAccess access) {
  constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
  const bool isPrivate = access == FileAccess::ownerOnly;
  const mode_t mode = isPrivate ? 0600 : 0666;
  const Place place(path);
  const auto open = [=](int folder, const char* name) { return ::openat(folder, name, flags, mode); };
  FileDescriptor file(place.with(open), path);
  if (file.number_ < 0 && errno == EEXIST) {
    const int removed = place.with([](int folder, const char* name) { return ::unlinkat(folder, name, 0); });
    if (removed != 0 && errno != ENOENT) failWith("Could not replace the file", path, errno);
    file.number_ = place.with(open);
  }
  if (file.number_ < 0) file.fail("Could not create the file");
  // A umask may have left too little.
  if (isPrivate && ::fchmod(file.number_, mode) != 0) file.fail("Could not create the file");
  return file;
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : number_(std::exchange(other.number_, -1)), path_(std::move(other.path_)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  std::swap(number_, other.number_);
  std::swap(path_, other.path_);
  return *this;
}

FileDescriptor::~FileDescriptor() {
  if (number_ >= 0) ::close(number_);
}

std::size_t FileDescriptor::read(std::span<std::uint8_t> buffer) {
  std::size_t filled = 0;
  while (filled < buffer.size()) {
    const ssize_t count = ::read(number_, buffer.data() + filled, buffer.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("Could not read the file");
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return filled;
}

void FileDescriptor::write(ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(number_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("Could not write the file");
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void FileDescriptor::seek(std::int64_t offset) {
  if (::lseek(number_, offset, SEEK_SET) < 0) fail("Could not read the file");
}

std::int64_t FileDescriptor::size() const {
  struct stat status {};
  if (::fstat(number_, &status) != 0) fail("Could not read the file");
  return status.st_size;
}

void FileDescriptor::requireLength(std::int64_t size) const {
  constexpr std::int64_t alwaysTaken = 1 << 20;
  if (size <= alwaysTaken) return;
  // The kernel compares with the file system's limit first, whether that can set space aside or not.
  if (::fallocate(number_, FALLOC_FL_KEEP_SIZE, size - 1, 1) != 0 && errno == EFBIG) fail("Could not write the file");
}

void FileDescriptor::close() {
  if (::close(std::exchange(number_, -1)) != 0) fail("Could not write the file");
}

void FileDescriptor::fail(const char* what) const { failWith(what, path_, errno); }
