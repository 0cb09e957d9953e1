#include "TidewellCore/Export/BackupMedia.h"

#include "TidewellCore/Export/FileDigest.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

// An encrypted file is decrypted into a working folder first, which goes again.
std::string digestOf(const OpenedBackup& opened, ManifestFile file, std::int64_t size,
                     const CancellationCheck& isCancelled) {
  if (!opened.keyOf(file)) return FileDigest::of(*opened.location(file), isCancelled);
  const TemporaryFolder folder(TemporaryFolder::mediaPrefix);
  file.plaintextSize = size;
  opened.materialize(file, folder.path() / "medium", isCancelled);
  return FileDigest::of(folder.path() / "medium", isCancelled);
}

}  // namespace

std::optional<std::string> BackupMedia::digest(std::string_view path, std::int64_t size,
                                               const CancellationCheck& isCancelled) {
  if (files_.empty()) {
    for (const ManifestFile& medium : backup_.media()) files_.emplace(medium.relativePath, &medium);
  }
  const auto file = files_.find(path);
  if (file == files_.end() || backup_.opened.provenSize(*file->second) != size) return std::nullopt;
  try {
    return digestOf(backup_.opened, *file->second, size, isCancelled);
  } catch (const std::exception& error) {
    if (TidewellError::isCancellation(error)) throw;
    return std::nullopt;
  }
}
