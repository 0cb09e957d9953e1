#include "TidewellCore/Export/BackupDigests.h"

#include "TidewellCore/Export/FileDigest.h"
#include "TidewellCore/Platform/PartialFile.h"
#include "TidewellCore/TidewellError.h"

std::optional<std::string> BackupDigests::of(std::string_view path, std::int64_t size,
                                             const CancellationCheck& isCancelled) try {
  const ManifestFile* file = find(path);
  if (file == nullptr || source_.opened.provenSize(*file) != size) return std::nullopt;
  const auto location = source_.opened.location(*file);
  if (!location) return std::nullopt;
  return digestOf({.location = *location, .encryptionKey = source_.opened.keyOf(*file), .size = size}, isCancelled);
} catch (const std::exception& error) {
  if (TidewellError::isCancellation(error)) throw;
  return std::nullopt;
}

const ManifestFile* BackupDigests::find(std::string_view path) {
  if (files_.empty()) {
    for (const ManifestFile& file : source_.media()) files_.emplace(file.relativePath, &file);
  }
  const auto found = files_.find(path);
  return found == files_.end() ? nullptr : found->second;
}

std::string BackupDigests::digestOf(const StoredFile& stored, const CancellationCheck& isCancelled) const {
  if (!stored.encryptionKey) return FileDigest::of(stored.location, isCancelled);
  const PartialFile plaintext(folder_ / "medium");
  source_.opened.writePlaintext(stored, plaintext.path(), isCancelled, FileAccess::ownerOnly);
  return FileDigest::of(plaintext.path(), isCancelled);
}
