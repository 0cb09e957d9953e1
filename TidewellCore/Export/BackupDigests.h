#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "TidewellCore/ChatData/BackupSource.h"

// The digests of a backup's media, made as they are asked for.
class BackupDigests {
 public:
  // `source` must outlive it. What is encrypted is decrypted into a working file in `folder`, which goes at once.
  BackupDigests(const BackupSource& source, std::filesystem::path folder)
      : source_(source), folder_(std::move(folder)) {}

  // SHA-256 in Base64 of the medium with this path ("Message/Media/…"); absent when the backup has none of that size in
  // bytes, or none that can be read. Throws TidewellError::cancelled.
  std::optional<std::string> of(std::string_view path, std::int64_t size, const CancellationCheck& isCancelled);

 private:
  const ManifestFile* find(std::string_view path);
  std::string digestOf(const StoredFile& stored, const CancellationCheck& isCancelled) const;

  const BackupSource& source_;
  std::filesystem::path folder_;
  std::unordered_map<std::string_view, const ManifestFile*> files_;  // by path; filled when it is first asked for
};
