#include "TidewellCore/Platform/TemporaryFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <random>
#include <set>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownerOnly = 0700;

// Version 4, variant 1 of RFC 4122.
std::string randomUUID() {
  std::random_device random;
  const auto word = [&] { return static_cast<std::uint32_t>(random()); };
  const std::uint32_t last = word();
  return fmt::format("{:08X}-{:04X}-4{:03X}-{:04X}-{:08X}{:04X}", word(), last >> 16, word() & 0xFFF,
                     0x8000 | (word() & 0x3FFF), word(), last & 0xFFFF);
}

constexpr std::size_t lengthOfUUID = 36;

fs::path withAnotherUUID(const fs::path& path) {
  const std::string name = path.filename();
  return path.parent_path() / (name.substr(0, name.size() - lengthOfUUID) + randomUUID());
}

bool isUUID(std::string_view text) {
  constexpr std::string_view shape = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
  return std::ranges::equal(text, shape, [](char character, char expected) {
    const bool isDigit = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F');
    return expected == 'X' ? isDigit : character == expected;
  });
}

// The folders of this process. Never destroyed: who ends the program looks here while others already leave it.
struct Living {
  std::mutex mutex;
  std::set<fs::path> paths;
};
Living& living() {
  static auto& folders = *new Living;
  return folders;
}

int openFolder(const fs::path& path) { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }

// Of a folder that is open. Errno says why it cannot be found out.
enum class Standing { itself, goneOrAnother, unknown };
Standing standingOf(int folder, const fs::path& path) {
  struct stat opened {};
  struct stat named {};
  if (::fstat(folder, &opened) != 0) return Standing::unknown;
  if (::lstat(path.c_str(), &named) != 0) return errno == ENOENT ? Standing::goneOrAnother : Standing::unknown;
  const bool isSame = opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
  return isSame ? Standing::itself : Standing::goneOrAnother;
}

[[noreturn]] void fail(const fs::path& path, int error) {
  throw fs::filesystem_error("Could not create a working folder", path,
                             std::error_code(error, std::generic_category()));
}

// Makes a folder and holds its lock; -1 when a sweep came first, which takes it for one that was left behind.
// A file system without locks gives none, and there a sweep leaves everything alone.
int makeLocked(const fs::path& path) {
  if (::mkdir(path.c_str(), ownerOnly) != 0) fail(path, errno);
  // Whatever the umask has taken away.
  const int folder = ::chmod(path.c_str(), ownerOnly) == 0 ? openFolder(path) : -1;
  if (folder < 0 && errno != ENOENT) {
    const int error = errno;
    ::rmdir(path.c_str());
    fail(path, error);
  }
  const bool isLockedBySweep = folder >= 0 && ::flock(folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  const Standing standing = folder < 0 || isLockedBySweep ? Standing::goneOrAnother : standingOf(folder, path);
  if (standing == Standing::itself) return folder;
  const int error = errno;
  if (folder >= 0) ::close(folder);
  ::rmdir(path.c_str());
  if (standing == Standing::unknown) fail(path, error);
  return -1;
}

bool isOfThisUserAlone(int folder) {
  struct stat status {};
  return ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid() && (status.st_mode & 0777) == ownerOnly;
}

void removeUnlessLocked(const fs::path& path) {
  const int folder = openFolder(path);
  if (folder < 0) return;
  std::error_code ignored;
  if (isOfThisUserAlone(folder) && ::flock(folder, LOCK_EX | LOCK_NB) == 0 &&
      standingOf(folder, path) == Standing::itself) {
    fs::remove_all(path, ignored);
  }
  ::close(folder);
}

// Under another name first, so that nobody who still works in it adds more. A sweep knows that name as well.
void removeForGood(const fs::path& path) noexcept {
  std::error_code error;
  const fs::path aside = withAnotherUUID(path);
  fs::rename(path, aside, error);
  fs::remove_all(error ? path : aside, error);
}

// An empty TMPDIR names none.
fs::path parentOfAll() {
  const char* named = std::getenv("TMPDIR");
  return named == nullptr || *named == '\0' ? "/tmp" : named;
}

}  // namespace

bool TemporaryFolder::isName(std::string_view name) {
  return std::ranges::any_of(std::array{manifestPrefix, databasesPrefix, mediaPrefix}, [&](std::string_view prefix) {
    return name.starts_with(prefix) && isUUID(name.substr(prefix.size()));
  });
}

TemporaryFolder::TemporaryFolder(std::string_view prefix) {
  const fs::path parent = parentOfAll();
  const std::lock_guard guard(living().mutex);
  while (lock_ < 0) {
    path_ = parent / (std::string(prefix) + randomUUID());
    lock_ = makeLocked(path_);
  }
  living().paths.insert(path_);
}

TemporaryFolder::~TemporaryFolder() {
  if (path_.empty()) return;
  const std::lock_guard guard(living().mutex);
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  living().paths.erase(path_);
  ::close(lock_);
}

TemporaryFolder::TemporaryFolder(TemporaryFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})), lock_(std::exchange(other.lock_, -1)) {}

TemporaryFolder& TemporaryFolder::operator=(TemporaryFolder&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(lock_, other.lock_);
  return *this;
}

void TemporaryFolder::sweep() noexcept {
  std::error_code error;
  for (fs::directory_iterator entry(parentOfAll(), error), end; !error && entry != end; entry.increment(error)) {
    if (isName(entry->path().filename().native())) removeUnlessLocked(entry->path());
  }
}

void TemporaryFolder::removeAllForGood() noexcept {
  living().mutex.lock();
  for (const fs::path& path : living().paths) removeForGood(path);
}
