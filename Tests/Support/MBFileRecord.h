#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Tests/Support/Bytes.h"

namespace Fixture {

// What the file index keeps about one file. Times are Unix seconds.
struct MBFileRecord {
  std::string relativePath;
  std::optional<std::int64_t> size;
  std::uint32_t protectionClass = 3;
  std::uint32_t mode = 0100644;
  std::uint64_t inode = 0;
  std::int64_t modified = 0;
  // The persistent key (see KeyBag::persistentKey); absent in plain backups, for folders and links.
  std::optional<Bytes> encryptionKey;
};

// The record as iOS stores it: an NSKeyedArchiver archive in a binary property list.
Bytes archive(const MBFileRecord& record);

}  // namespace Fixture
