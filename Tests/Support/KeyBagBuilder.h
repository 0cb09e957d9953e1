#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// What the bag is locked with. The defaults are quick; iOS 10.2 and later use 10,000 and 10,000,000 rounds.
struct KeyBagOptions {
  std::string password;
  std::uint32_t iterations = 10;
  // Absent: an older bag without DPIC and DPSL, locked by the SHA-1 derivation alone.
  std::optional<std::uint32_t> doubleIterations = 100;
  bool emptyDoubleSalt = false;
  // ITER written as a 64-bit number.
  bool wideIterations = false;
  std::vector<std::uint32_t> passwordClasses = {1, 2, 3, 4, 5, 6, 7, 8};
  // Wrapped with the device's own key: no password opens them.
  std::vector<std::uint32_t> deviceClasses = {9, 10, 11};
};

// A locked bag with its secrets beside it.
struct KeyBag {
  Bytes blob;
  Bytes passwordKey;
  // The keys of the password's classes, in clear.
  std::map<std::uint32_t, Bytes> classKeys;

  // The persistent form of a file's key: the class as 32-bit little-endian number, then the wrapped key.
  // A class without a known key gives 40 bytes that nothing unwraps.
  Bytes persistentKey(std::uint32_t protectionClass, ByteView fileKey) const;
};

KeyBag buildKeyBag(const KeyBagOptions& options, SeededRandom& random);

// Derives the key that a bag with these salts and counts is locked with.
Bytes passwordKey(const KeyBagOptions& options, ByteView salt, ByteView doubleSalt);

// One item of the bag: four letters, the value's length as 32-bit big-endian number, the value.
void appendItem(Bytes& blob, std::string_view tag, ByteView value);
void appendItem(Bytes& blob, std::string_view tag, std::uint32_t value);
void appendWideItem(Bytes& blob, std::string_view tag, std::uint64_t value);

}  // namespace Fixture
