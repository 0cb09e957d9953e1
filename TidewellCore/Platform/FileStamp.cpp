#include "TidewellCore/Platform/FileStamp.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/RootFolder.h"

namespace {

namespace fs = std::filesystem;

using Visit = std::function<void(const std::string& path, const FileStamp& stamp)>;

[[noreturn]] void fail(const fs::path& path) {
  throw fs::filesystem_error("Could not look at", path, {errno, std::generic_category()});
}

FileStamp stampOf(const struct stat& status) {
  return {.length = status.st_size,
          .modified = status.st_mtim,
          .changed = status.st_ctim,
          .volume = status.st_dev,
          .number = status.st_ino};
}

// Closes what it lists. Without "." and "..", sorted.
std::vector<std::string> namesIn(DIR* stream, const fs::path& path) {
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(stream)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  const int error = errno;
  ::closedir(stream);
  errno = error;
  if (error != 0) fail(path);
  std::ranges::sort(names);
  return names;
}

class Walk {
 public:
  Walk(const fs::path& root, const Visit& visit, const CancellationCheck& isCancelled)
      : root_(root), visit_(visit), cancellation_(isCancelled) {}

  // `folder` is open, and closed in the end.
  bool below(int folder, const std::string& path) try {
    // The stream takes its own number, so that files can be looked at by the other one.
    const int listed = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* stream = listed < 0 ? nullptr : ::fdopendir(listed);
    if (stream == nullptr) fail(root_ / path);
    bool isPlain = true;
    for (const std::string& name : namesIn(stream, root_ / path)) {
      cancellation_.step();
      isPlain = isPlain && look(folder, name, path.empty() ? name : path + "/" + name);
    }
    ::close(folder);
    return isPlain;
  } catch (...) {
    ::close(folder);
    throw;
  }

 private:
  bool look(int folder, const std::string& name, const std::string& path) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) fail(root_ / path);
    if (S_ISREG(status.st_mode)) {
      visit_(path, stampOf(status));
      return true;
    }
    if (!S_ISDIR(status.st_mode)) return false;
    const int inner = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (inner < 0) fail(root_ / path);
    return below(inner, path);
  }

  const fs::path& root_;
  const Visit& visit_;
  CancellationPoint cancellation_;
};

std::string written(const timespec& time) { return fmt::format("{}.{:09}", time.tv_sec, time.tv_nsec); }

}  // namespace

std::optional<FileStamp> FileStamp::of(const fs::path& path) {
  struct stat status {};
  const auto look = [&](int folder, const char* name) { return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW); };
  if (Place(path).with(look) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    fail(path);
  }
  return S_ISREG(status.st_mode) ? std::optional(stampOf(status)) : std::nullopt;
}

bool FileStamp::isSettled() const {
  // FAT counts modifications in two seconds, other file systems in ticks of at most a hundredth.
  constexpr std::int64_t nanoseconds = 1'000'000'000;
  const bool isCoarse = modified.tv_nsec % 10'000'000 == 0;
  const std::int64_t tick = isCoarse ? 3 * nanoseconds : nanoseconds / 50;
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const auto isPast = [&](const timespec& time) {
    const std::int64_t seconds = std::clamp<std::int64_t>(now.tv_sec - time.tv_sec, -1, 1'000);
    return seconds * nanoseconds + now.tv_nsec - time.tv_nsec > tick;
  };
  return isPast(modified) && isPast(changed);
}

std::string FileStamp::ofContent() const { return fmt::format("{} {}", length, written(modified)); }

std::string FileStamp::ofEverything() const {
  return fmt::format("{} {} {} {}", ofContent(), written(changed), volume, number);
}

bool forEachStampBelow(const fs::path& folder, const Visit& visit, const CancellationCheck& isCancelled) {
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  const int opened = Place(folder).with([](int above, const char* name) { return ::openat(above, name, flags); });
  if (opened < 0 && (errno == ENOENT || errno == ENOTDIR || errno == ELOOP)) return false;
  if (opened < 0) fail(folder);
  return Walk(folder, visit, isCancelled).below(opened, "");
}
