#include "TidewellCore/Crypto/MBFileArchive.h"

#include <limits>
#include <utility>

#include "TidewellCore/Platform/KeyedArchive.h"

namespace {

constexpr std::size_t shortestKey = 8;
// A persistent key is a class number of 4 bytes and a 32-byte key wrapped into 40.
constexpr std::size_t persistentKeySize = 44;
constexpr std::uint8_t highestProtectionClass = 12;

std::optional<std::int64_t> number(const KeyedArchive& archive, const char* key, const char* otherKey) {
  const auto value = archive.value(key);
  return KeyedArchive::number(value ? value : archive.value(otherKey));
}

MBFileArchive::Metadata archivedMetadata(ByteView record) {
  const KeyedArchive archive(record);
  MBFileArchive::Metadata metadata{.size = number(archive, "Size", "size")};
  auto key = KeyedArchive::bytes(archive.object("EncryptionKey"));
  if (key && key->size() >= shortestKey) metadata.encryptionKey = std::move(key);
  const auto protectionClass = number(archive, "ProtectionClass", "protectionClass");
  if (protectionClass && *protectionClass >= 0 && *protectionClass <= std::numeric_limits<std::uint32_t>::max()) {
    metadata.protectionClass = static_cast<std::uint32_t>(*protectionClass);
  }
  return metadata;
}

std::optional<Bytes> firstPersistentKey(ByteView record) {
  for (std::size_t offset = 0; offset + persistentKeySize <= record.size(); ++offset) {
    if (record[offset] < 1 || record[offset] > highestProtectionClass) continue;
    const ByteView key = record.subspan(offset, persistentKeySize);
    return Bytes(key.begin(), key.end());
  }
  return std::nullopt;
}

}  // namespace

MBFileArchive::Metadata MBFileArchive::metadata(ByteView record) {
  Metadata metadata;
  try {
    metadata = archivedMetadata(record);
  } catch (const PropertyListError&) {
    metadata = {};  // no keyed archive: only the search below can find a key
  }
  if (!metadata.encryptionKey) metadata.encryptionKey = firstPersistentKey(record);
  return metadata;
}
