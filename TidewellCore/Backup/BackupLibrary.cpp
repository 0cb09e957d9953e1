#include "TidewellCore/Backup/BackupLibrary.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <tuple>

#include "TidewellCore/Backup/BackupInspector.h"
#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

std::error_code listingError(const fs::path& folder) {
  std::error_code error;
  const fs::directory_iterator iterator(folder, error);
  return error;
}

void appendUnreadable(const fs::path& folder, const std::exception& error, BackupLibrarySnapshot& snapshot) {
  snapshot.unreadable.push_back(
      {.name = PathText::text(folder.filename()), .reason = ErrorReport::of(error).errorDescription});
}

// A half-written or foreign folder never breaks the list.
void append(const fs::path& folder, BackupLibrarySnapshot& snapshot) {
  try {
    snapshot.backups.push_back({.info = BackupInspector::inspect(folder)});
  } catch (const std::exception& error) {
    appendUnreadable(folder, error, snapshot);
  }
}

bool holdsManifest(const fs::path& folder) { return Files::exists(folder / "Manifest.plist"); }

// Newest first, then by name.
bool standsBefore(const DiscoveredBackup& a, const DiscoveredBackup& b) {
  const auto key = [](const BackupInfo& info) {
    const double time = info.backupDate ? unixTime(*info.backupDate) : -std::numeric_limits<double>::infinity();
    return std::tuple(-time, info.deviceName.value_or(PathText::text(info.url.filename())));
  };
  return key(a.info) < key(b.info);
}

}  // namespace

fs::path DefaultPaths::home() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  const passwd* user = ::getpwuid(::getuid());
  return user == nullptr ? fs::path("/") : fs::path(user->pw_dir);
}

fs::path DefaultPaths::mobileSyncBackup() {
  return home() / "Library" / "Application Support" / "MobileSync" / "Backup";
}

BackupAccess BackupLibrary::access(const fs::path& root) {
  if (Files::isFolder(root)) return listingError(root) ? BackupAccess::denied : BackupAccess::readable;
  if (Files::exists(root)) return BackupAccess::missing;
  // A slash at the end would make the root its own parent.
  const fs::path parent = (root.has_filename() ? root : root.parent_path()).parent_path();
  if (!Files::isFolder(parent)) return BackupAccess::missing;
  return isPermissionError(listingError(parent)) ? BackupAccess::denied : BackupAccess::missing;
}

bool BackupLibrary::isPermissionError(const std::error_code& error) {
  return error == std::errc::permission_denied || error == std::errc::operation_not_permitted;
}

BackupLibrarySnapshot BackupLibrary::diagnose(const fs::path& root) {
  BackupLibrarySnapshot snapshot{.access = access(root)};
  if (snapshot.access != BackupAccess::readable) return snapshot;
  const bool isBackupItself = holdsManifest(root);
  for (const Files::Entry& entry : Files::listVisible(root)) {
    const fs::path child = root / entry.name;
    if (!entry.isFolder) continue;
    // The folders of a backup are no backups.
    if (holdsManifest(child))
      append(child, snapshot);
    else if (!isBackupItself)
      appendUnreadable(child, TidewellError::notABackup(PathText::text(child)), snapshot);
  }
  if (isBackupItself && snapshot.backups.empty()) append(root, snapshot);
  std::ranges::stable_sort(snapshot.backups, standsBefore);
  return snapshot;
}

std::int64_t BackupLibrary::folderByteCount(const fs::path& folder, const CancellationCheck& isCancelled) {
  std::int64_t total = 0;
  std::vector<fs::path> pending{folder};
  while (!pending.empty()) {
    throwIfCancelled(isCancelled);
    const fs::path current = std::move(pending.back());
    pending.pop_back();
    std::error_code error;
    for (fs::directory_iterator entry(current, error), end; !error && entry != end; entry.increment(error)) {
      if (entry->is_symlink(error)) continue;
      if (entry->is_directory(error)) pending.push_back(entry->path());
      total = saturatingAdd(total, Files::regularFileSize(entry->path()).value_or(0));
    }
  }
  return total;
}
