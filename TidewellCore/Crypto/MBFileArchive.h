#pragma once

#include <cstdint>
#include <optional>

#include "TidewellCore/Platform/Bytes.h"

// The record that Manifest.db keeps of each file: an NSKeyedArchiver property
// list of class MBFile (docs/formats/file-index.md).
namespace MBFileArchive {

struct Metadata {
  std::optional<Bytes> encryptionKey;  // class number (4 bytes, little-endian) and the wrapped key
  std::optional<std::uint32_t> protectionClass;
  std::optional<std::int64_t> size;  // of the plaintext, in bytes, as the phone recorded it

  bool operator==(const Metadata&) const = default;
};

// Never throws: what is missing or of the wrong type stays absent. A record
// that yields no key is searched for something that looks like one.
Metadata metadata(ByteView record);

}  // namespace MBFileArchive
