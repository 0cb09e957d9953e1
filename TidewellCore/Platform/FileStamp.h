#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "TidewellCore/Platform/Cancellation.h"

// By which it is noticed, without reading it, that a file is not what it was.
struct FileStamp {
  std::int64_t length = 0;   // in bytes
  timespec modified{};       // when its bytes were changed
  timespec changed{};        // when anything of it was
  std::uint64_t volume = 0;  // that it is on
  std::uint64_t number = 0;  // of its inode

  // Absent unless a regular file stands there; links are not followed. Throws what cannot be looked at.
  static std::optional<FileStamp> of(const std::filesystem::path& path);

  // A change within the same tick of the file system's clock would not be seen: whether that tick has passed.
  bool isSettled() const;

  // Length and modification alone, which a copy of the file can have, too.
  std::string ofContent() const;
  std::string ofEverything() const;
};

// Calls `visit` for each regular file below a folder, with its path from there, folder after folder, in ascending byte
// order in each. Returns false, early, when something stands there that is neither file nor folder, and when there is
// no such folder. Throws what cannot be read, and TidewellError::cancelled.
bool forEachStampBelow(const std::filesystem::path& folder,
                       const std::function<void(const std::string& path, const FileStamp& stamp)>& visit,
                       const CancellationCheck& isCancelled = {});
