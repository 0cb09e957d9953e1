#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TidewellCore/Platform/DateText.h"

// What a backup folder says of itself.
struct BackupInfo {
  std::filesystem::path url;  // the folder that holds Manifest.plist
  std::optional<std::string> deviceName;
  std::optional<std::string> productType;
  std::optional<std::string> iosVersion;
  std::optional<Date> backupDate;
  bool isEncrypted = false;
  std::optional<std::string> uniqueIdentifier;

  bool operator==(const BackupInfo&) const = default;
};
