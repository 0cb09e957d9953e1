#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "TidewellCore/ChatData/BackupSource.h"

// The bytes of a backup's media.
class BackupMedia {
 public:
  // The backup must outlive it.
  explicit BackupMedia(const BackupSource& backup) : backup_(backup) {}

  // SHA-256 in Base64 of the file of that path on the phone, decrypted. Absent where the backup has none of that size
  // in bytes, and where it cannot be read. Throws TidewellError::cancelled.
  std::optional<std::string> digest(std::string_view path, std::int64_t size, const CancellationCheck& isCancelled);

 private:
  const BackupSource& backup_;
  std::unordered_map<std::string_view, const ManifestFile*>
      files_;  // by their paths; filled when one is asked for first
};
