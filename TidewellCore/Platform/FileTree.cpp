// What Files does with names and folders; Files.cpp has what it does with content.

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/RootFolder.h"

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const char* what, const fs::path& path, const fs::path& other = {}) {
  throw fs::filesystem_error(what, path, other, std::error_code(errno, std::generic_category()));
}

bool isAbsence(int error) { return error == ENOENT || error == ENOTDIR; }

enum class Links { followed, asTheyAre };

// Links below a root are never followed.
int look(const fs::path& path, Links links, struct stat& status) {
  const Place place(path);
  const bool follows = links == Links::followed && !place.isBelowRoot();
  return place.with([&](int folder, const char* name) {
    return ::fstatat(folder, name, &status, follows ? 0 : AT_SYMLINK_NOFOLLOW);
  });
}

Files::Kind kindOfMode(mode_t mode) {
  if (S_ISREG(mode)) return Files::Kind::file;
  if (S_ISDIR(mode)) return Files::Kind::folder;
  return S_ISLNK(mode) ? Files::Kind::link : Files::Kind::other;
}

// Owns a folder that is being listed.
class Listing {
 public:
  explicit Listing(const fs::path& path) : path_(path) {
    const Place place(path);
    followsLinks_ = !place.isBelowRoot();
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followsLinks_ ? 0 : O_NOFOLLOW);
    const int number = place.with([&](int folder, const char* name) { return ::openat(folder, name, flags); });
    if (number < 0) fail("Could not read the folder", path);
    stream_ = ::fdopendir(number);
    if (stream_ == nullptr) failAndClose(number);
  }
  ~Listing() { ::closedir(stream_); }
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;

  // In no order, without "." and "..".
  void forEach(const std::function<void(const dirent&)>& visit) const {
    for (;;) {
      errno = 0;
      const dirent* entry = ::readdir(stream_);
      if (entry == nullptr && errno != 0) fail("Could not read the folder", path_);
      if (entry == nullptr) return;
      const std::string_view name = static_cast<const char*>(entry->d_name);
      if (name != "." && name != "..") visit(*entry);
    }
  }

  // Absent for what is gone again.
  std::optional<struct stat> look(const dirent& entry, Links links) const {
    struct stat status {};
    const bool follows = links == Links::followed && followsLinks_;
    const int flags = follows ? 0 : AT_SYMLINK_NOFOLLOW;
    if (::fstatat(::dirfd(stream_), static_cast<const char*>(entry.d_name), &status, flags) == 0) return status;
    // A link that leads nowhere, or somewhere that cannot be looked at, is no folder.
    if (isAbsence(errno) || follows) return std::nullopt;
    fail("Could not read the folder", path_ / static_cast<const char*>(entry.d_name));
  }

  bool isFolder(const dirent& entry) const {
    if (entry.d_type == DT_DIR) return true;
    const bool needsLook = entry.d_type == DT_UNKNOWN || (entry.d_type == DT_LNK && followsLinks_);
    const auto status = needsLook ? look(entry, Links::followed) : std::nullopt;
    return status && S_ISDIR(status->st_mode);
  }

  // Absent for anything but a regular file.
  std::optional<std::int64_t> fileSize(const dirent& entry) const {
    if (entry.d_type != DT_REG && entry.d_type != DT_UNKNOWN) return std::nullopt;
    const auto status = look(entry, Links::asTheyAre);
    return status && S_ISREG(status->st_mode) ? std::optional<std::int64_t>(status->st_size) : std::nullopt;
  }

 private:
  [[noreturn]] void failAndClose(int number) const {
    const int error = errno;
    ::close(number);
    errno = error;
    fail("Could not read the folder", path_);
  }

  fs::path path_;
  DIR* stream_ = nullptr;
  bool followsLinks_ = false;
};

// False when something stands there already.
bool makeOneFolder(const fs::path& path) {
  constexpr mode_t everybody = 0777;  // cut by the user's umask
  if (Place(path).with([](int folder, const char* name) { return ::mkdirat(folder, name, everybody); }) == 0) {
    return true;
  }
  if (errno == EEXIST) return false;
  fail("Could not create the folder", path);
}

int renameWith(const fs::path& from, const fs::path& to, unsigned flags) {
  const Place target(to);
  const fs::path name = from.filename();
  const bool areNeighbours = target.isBelowRoot() && from.parent_path() == to.parent_path() && name != "..";
  if (areNeighbours) {
    return target.with(
        [&](int folder, const char* toName) { return ::renameat2(folder, name.c_str(), folder, toName, flags); });
  }
  return Place(from).with([&](int fromFolder, const char* fromName) {
    return target.with(
        [&](int toFolder, const char* toName) { return ::renameat2(fromFolder, fromName, toFolder, toName, flags); });
  });
}

}  // namespace

Files::Kind Files::kindOf(const fs::path& path) {
  struct stat status {};
  if (look(path, Links::asTheyAre, status) == 0) return kindOfMode(status.st_mode);
  if (isAbsence(errno)) return Kind::nothing;
  fail("Could not look at", path);
}

bool Files::exists(const fs::path& path) {
  struct stat status {};
  return look(path, Links::followed, status) == 0;
}

bool Files::isThere(const fs::path& path) {
  struct stat status {};
  if (look(path, Links::followed, status) == 0) return true;
  if (isAbsence(errno)) return false;
  fail("Could not look at", path);
}

bool Files::isRegularFile(const fs::path& path) { return regularFileSize(path).has_value(); }

std::optional<std::int64_t> Files::regularFileSize(const fs::path& path) {
  struct stat status {};
  if (look(path, Links::asTheyAre, status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_size;
}

std::optional<std::int64_t> Files::Lengths::of(const fs::path& path) {
  const std::string& text = path.native();
  const std::size_t slash = text.rfind('/');
  const std::string_view name = std::string_view(text).substr(slash == std::string::npos ? 0 : slash + 1);
  if (slash == std::string::npos || name.empty() || name == "." || name == "..") return regularFileSize(path);
  if (!place_ || std::string_view(text).substr(0, slash) != folder_) {
    place_.emplace(path);
    folder_ = text.substr(0, slash);
  }
  if (!place_->isBelowRoot()) return regularFileSize(path);
  struct stat status {};
  const int result = place_->withNeighbour(name.data(), [&](int folder, const char* neighbour) {
    return ::fstatat(folder, neighbour, &status, AT_SYMLINK_NOFOLLOW);
  });
  // What failed for a moment is tried anew for the next file.
  if (result != 0 && errno != ENOENT && errno != ENOTDIR && errno != ELOOP) place_.reset();
  return result == 0 && S_ISREG(status.st_mode) ? std::optional<std::int64_t>(status.st_size) : std::nullopt;
}

bool Files::isFolder(const fs::path& path) {
  struct stat status {};
  return look(path, Links::followed, status) == 0 && S_ISDIR(status.st_mode);
}

bool Files::isWithin(const fs::path& path, const fs::path& folder) {
  const auto whole = [](const fs::path& place) { return fs::weakly_canonical(fs::absolute(place)); };
  const fs::path relative = whole(path).lexically_relative(whole(folder));
  return !relative.empty() && *relative.begin() != "..";
}

std::vector<Files::Entry> Files::list(const fs::path& folder) {
  std::vector<Entry> entries;
  const Listing listing(folder);
  listing.forEach([&](const dirent& entry) {
    entries.push_back(
        {.name = PathText::text(static_cast<const char*>(entry.d_name)), .isFolder = listing.isFolder(entry)});
  });
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

std::vector<Files::SizedFile> Files::listFiles(const fs::path& folder) {
  std::vector<SizedFile> files;
  const Listing listing(folder);
  listing.forEach([&](const dirent& entry) {
    if (const auto size = listing.fileSize(entry)) {
      files.push_back({.name = PathText::text(static_cast<const char*>(entry.d_name)), .size = *size});
    }
  });
  std::ranges::sort(files, {}, &SizedFile::name);
  return files;
}

void Files::makeFolder(const fs::path& path) {
  if (path.empty() || isFolder(path)) return;
  const fs::path whole = path.has_filename() ? path : path.parent_path();  // "folder/" and "folder" are one place
  if (whole.has_parent_path() && whole != whole.parent_path()) makeFolder(whole.parent_path());
  if (makeOneFolder(whole) || isFolder(whole)) return;
  errno = ENOTDIR;
  fail("Could not create the folder", whole);
}

bool Files::remove(const fs::path& path) {
  const Place place(path);
  const auto unlink = [&](int flags) {
    return place.with([&](int folder, const char* name) { return ::unlinkat(folder, name, flags); });
  };
  if (unlink(0) == 0) return true;
  // What a system answers for a folder differs: EISDIR, or EPERM as POSIX has it.
  const int answer = errno;
  const bool mayBeFolder = answer == EISDIR || answer == EPERM;
  if (mayBeFolder && unlink(AT_REMOVEDIR) == 0) return true;
  if (mayBeFolder && errno == ENOTDIR) errno = answer;  // a file that may not be removed
  if (isAbsence(errno)) return false;
  fail("Could not remove", path);
}

void Files::removeQuietly(const fs::path& path) noexcept try { Files::remove(path); } catch (const std::exception&) {
}

void Files::removeTree(const fs::path& path) {
  if (kindOf(path) == Kind::folder) {
    for (const Entry& entry : list(path)) removeTree(path / PathText::path(entry.name));
  }
  Files::remove(path);
}

void Files::rename(const fs::path& from, const fs::path& to) {
  if (renameWith(from, to, 0) != 0) fail("Could not move the file", from, to);
}

bool Files::renameToFree(const fs::path& from, const fs::path& to) {
  if (renameWith(from, to, RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  if (errno != EINVAL && errno != ENOSYS) fail("Could not move the file", from, to);
  // This file system knows no such renaming: look first, then rename.
  if (kindOf(to) != Kind::nothing) return false;
  Files::rename(from, to);
  return true;
}
