#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TidewellCore/Platform/Bytes.h"

// What the application remembers between launches. A bookmark is an opaque block of the
// system that restores access to a folder which the user chose.
struct ExportPreferences {
  std::optional<std::string> lastBackupPath;
  std::optional<std::string> lastDestinationPath;
  std::optional<Bytes> lastBackupBookmark;
  std::optional<Bytes> lastDestinationBookmark;

  // The file's place below `base`, the folder where a user's applications keep what they need.
  static std::filesystem::path fileURL(const std::filesystem::path& base);

  // Nothing remembered when the file is missing, damaged or foreign.
  static ExportPreferences load(const std::filesystem::path& url);
  // Makes the folders above the file, too. Failures are the file system's own.
  void save(const std::filesystem::path& url) const;

  bool operator==(const ExportPreferences&) const = default;
};
