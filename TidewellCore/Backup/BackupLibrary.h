#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "TidewellCore/Backup/BackupInfo.h"
#include "TidewellCore/Platform/Cancellation.h"

// Whether the folder that backups are kept in can be read.
enum class BackupAccess {
  readable,  // it is there and can be listed
  missing,   // it is not there, or is no folder
  denied,    // this process may not list it
};

constexpr std::array<std::pair<BackupAccess, std::string_view>, 3> rawValueTable(BackupAccess) {
  using enum BackupAccess;
  return {{{readable, "readable"}, {missing, "missing"}, {denied, "denied"}}};
}

struct DiscoveredBackup {
  BackupInfo info;
  std::optional<std::int64_t> byteCount;  // absent until it was measured

  std::string id() const { return info.url.native(); }

  bool operator==(const DiscoveredBackup&) const = default;
};

// A folder among the backups that cannot be read as one.
struct UnreadableFolder {
  std::string name;
  std::string reason;  // a sentence in English

  bool operator==(const UnreadableFolder&) const = default;
};

struct BackupLibrarySnapshot {
  BackupAccess access = BackupAccess::missing;
  std::vector<DiscoveredBackup> backups;     // newest first
  std::vector<UnreadableFolder> unreadable;  // by name

  bool operator==(const BackupLibrarySnapshot&) const = default;
};

namespace DefaultPaths {

std::filesystem::path home();
// Where backups are kept in this user's home folder.
std::filesystem::path mobileSyncBackup();

}  // namespace DefaultPaths

// The backups below one root folder. Nothing here throws for what it finds.
namespace BackupLibrary {

BackupAccess access(const std::filesystem::path& root);
bool isPermissionError(const std::error_code& error);
// Folders that are no backups, or damaged ones, are named apart; hidden ones are left out.
BackupLibrarySnapshot diagnose(const std::filesystem::path& root);
// The bytes of all regular files below a folder. Takes long on a large backup;
// ends with TidewellError::cancelled when asked to.
std::int64_t folderByteCount(const std::filesystem::path& folder, const CancellationCheck& isCancelled = {});

}  // namespace BackupLibrary
