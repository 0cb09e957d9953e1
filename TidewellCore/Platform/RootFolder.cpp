#include "TidewellCore/Platform/RootFolder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

std::string withoutSlashAtEnd(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

// What follows the root's path; absent for a path that is not below it.
std::optional<std::string_view> below(std::string_view root, std::string_view path) {
  if (root.empty() || !path.starts_with(root)) return std::nullopt;
  path.remove_prefix(root.size());
  if (!path.empty() && path.front() != '/' && !root.ends_with('/')) return std::nullopt;
  path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
  return path;
}

bool leadsUp(std::string_view path) {
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('/'));
    if (part == "..") return true;
    path.remove_prefix(std::min(part.size() + 1, path.size()));
  }
  return false;
}

// Why a folder was not opened. The system calls a link no folder, but it is not absent.
int reasonFor(int folder, const char* name) {
  const int error = errno;
  struct stat status {};
  const bool isLink =
      error == ENOTDIR && ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
  return isLink ? ELOOP : error;
}

int openStepByStep(int root, const std::string& path) {
  int folder = ::fcntl(root, F_DUPFD_CLOEXEC, 0);
  for (const fs::path& part : fs::path(path)) {
    if (folder < 0 || part.empty()) continue;
    const int next = ::openat(folder, part.c_str(), folderFlags | O_NOFOLLOW);
    const int error = next < 0 ? reasonFor(folder, part.c_str()) : 0;
    ::close(folder);
    errno = error;
    folder = next;
  }
  return folder;
}

// openat2 is of Linux 5.6; a container may forbid it.
int openFolderBelow(int root, const std::string& path) {
  open_how how{};
  how.flags = folderFlags;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  const auto folder = static_cast<int>(::syscall(SYS_openat2, root, path.c_str(), &how, sizeof how));
  const bool isUnknown = folder < 0 && (errno == ENOSYS || errno == EPERM);
  return isUnknown ? openStepByStep(root, path) : folder;
}

}  // namespace

struct RootFolder::Opened {
  std::array<std::string, 2> spellings;
  int number = -1;

  explicit Opened(const fs::path& folder) : number(::open(folder.c_str(), folderFlags)) {
    if (number < 0) throw fs::filesystem_error("Could not open the folder", folder, {errno, std::generic_category()});
    spellings = {withoutSlashAtEnd(folder.native()),
                 withoutSlashAtEnd(fs::absolute(folder).lexically_normal().native())};
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  ~Opened() { ::close(number); }

  // All that are open.
  static inline std::shared_mutex mutex;
  static inline std::vector<std::shared_ptr<const Opened>> all;

  // The innermost root of a path, and what follows it.
  static std::pair<std::shared_ptr<const Opened>, std::string_view> of(const std::string& path) {
    const std::shared_lock lock(mutex);
    std::pair<std::shared_ptr<const Opened>, std::string_view> found;
    for (const auto& opened : all) {
      for (const std::string& spelling : opened->spellings) {
        const auto rest = below(spelling, path);
        // Of two for one path, the later one found what stands there now.
        if (rest && (!found.first || rest->size() <= found.second.size())) found = {opened, *rest};
      }
    }
    return found;
  }
};

RootFolder::RootFolder(const fs::path& folder) : opened_(std::make_shared<const Opened>(folder)) {
  const std::unique_lock lock(Opened::mutex);
  Opened::all.push_back(opened_);
}

RootFolder::~RootFolder() {
  if (!opened_) return;
  const std::unique_lock lock(Opened::mutex);
  std::erase(Opened::all, opened_);
}

RootFolder& RootFolder::operator=(RootFolder&& other) noexcept {
  std::swap(opened_, other.opened_);
  return *this;
}

Place::Place(const fs::path& path) : name_(path.native()), folder_(AT_FDCWD) {
  auto [root, rest] = RootFolder::Opened::of(path.native());
  if (!root) return;
  root_ = std::move(root);
  openFolder(withoutSlashAtEnd(std::string(rest)));
}

Place::~Place() {
  if (ownsFolder_) ::close(folder_);
}

void Place::openFolder(const std::string& below) {
  const auto slash = below.rfind('/');
  name_ = below.empty() ? "." : below.substr(slash == std::string::npos ? 0 : slash + 1);
  folder_ = root_->number;
  if (leadsUp(below)) {
    error_ = EXDEV;
  } else if (slash != std::string::npos) {
    folder_ = openFolderBelow(root_->number, below.substr(0, slash));
    ownsFolder_ = folder_ >= 0;
    if (!ownsFolder_) error_ = errno;
  }
}

bool Place::isOpen() const {
  if (error_ != 0) errno = error_;
  return error_ == 0;
}
