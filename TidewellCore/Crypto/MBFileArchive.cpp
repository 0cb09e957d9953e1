#include "TidewellCore/Crypto/MBFileArchive.h"

#include <cmath>
#include <limits>

#include "TidewellCore/Platform/PropertyList.h"

namespace {

constexpr std::size_t shortestKey = 8;
// A persistent key is a class number of 4 bytes and a 32-byte key wrapped into 40.
constexpr std::size_t persistentKeySize = 44;
constexpr std::uint8_t highestProtectionClass = 12;

std::optional<std::int64_t> number(const PropertyList* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* integer = value->as<std::int64_t>()) return *integer;
  const auto* real = value->as<double>();
  if (real != nullptr && std::abs(*real) < 9.2e18) return static_cast<std::int64_t>(*real);
  return std::nullopt;
}

// A keyed archive: objects that refer to each other by their index.
class Archive {
 public:
  explicit Archive(const PropertyListDictionary& plist) : objects_(arrayUnder(plist, "$objects")) {
    const PropertyList* top = entry(plist, "$top");
    const auto* topObjects = top == nullptr ? nullptr : top->as<PropertyListDictionary>();
    if (topObjects != nullptr) root_ = dictionary(follow(entry(*topObjects, "root")));
  }

  const PropertyListDictionary* root() const { return root_; }

  // The object that a reference leads to; a value that is none stands for itself.
  const PropertyList* follow(const PropertyList* value) const {
    const auto index = reference(value);
    if (!index) return value;
    if (objects_ == nullptr || *index >= objects_->size()) return nullptr;
    return &(*objects_)[static_cast<std::size_t>(*index)];
  }

  static const PropertyListDictionary* dictionary(const PropertyList* value) {
    return value == nullptr ? nullptr : value->as<PropertyListDictionary>();
  }

 private:
  static const PropertyListArray* arrayUnder(const PropertyListDictionary& plist, const char* key) {
    const PropertyList* value = entry(plist, key);
    return value == nullptr ? nullptr : value->as<PropertyListArray>();
  }

  // A UID of the binary form, a dictionary with "CF$UID" of the XML form, or a plain number.
  static std::optional<std::uint64_t> reference(const PropertyList* value) {
    if (value == nullptr) return std::nullopt;
    if (const auto* uid = value->as<PropertyListUID>()) return uid->index;
    const auto* wrapper = dictionary(value);
    const auto index = number(wrapper == nullptr ? value : entry(*wrapper, "CF$UID"));
    if (!index || *index < 0) return std::nullopt;
    return static_cast<std::uint64_t>(*index);
  }

  const PropertyListArray* objects_;
  const PropertyListDictionary* root_ = nullptr;
};

const Bytes* bytesIn(const PropertyList* value) {
  if (value == nullptr) return nullptr;
  if (const auto* bytes = value->as<Bytes>()) return bytes;
  const auto* object = value->as<PropertyListDictionary>();
  if (object == nullptr) return nullptr;
  for (const char* key : {"NS.data", "NS.bytes"}) {
    const PropertyList* content = entry(*object, key);
    if (content != nullptr && content->as<Bytes>() != nullptr) return content->as<Bytes>();
  }
  return nullptr;
}

const PropertyList* either(const PropertyListDictionary& object, const char* key, const char* otherKey) {
  const PropertyList* value = entry(object, key);
  return value != nullptr ? value : entry(object, otherKey);
}

MBFileArchive::Metadata archivedMetadata(ByteView record) {
  const PropertyList plist = parsePropertyList(record);
  const auto* dictionary = plist.as<PropertyListDictionary>();
  if (dictionary == nullptr) return {};
  const Archive archive(*dictionary);
  if (archive.root() == nullptr) return {};
  MBFileArchive::Metadata metadata{.size = number(either(*archive.root(), "Size", "size"))};
  const Bytes* key = bytesIn(archive.follow(entry(*archive.root(), "EncryptionKey")));
  if (key != nullptr && key->size() >= shortestKey) metadata.encryptionKey = *key;
  const auto protectionClass = number(either(*archive.root(), "ProtectionClass", "protectionClass"));
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
