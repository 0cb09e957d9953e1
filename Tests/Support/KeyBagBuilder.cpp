#include "Tests/Support/KeyBagBuilder.h"

#include "Tests/Support/TestCrypto.h"

namespace Fixture {

namespace {

constexpr std::uint32_t wrappedWithDeviceKey = 1;
constexpr std::uint32_t wrappedWithPassword = 2;

Bytes bigEndian(std::uint64_t value, std::size_t length) {
  Bytes bytes(length);
  for (std::size_t index = 0; index < length; ++index) {
    bytes[length - 1 - index] = static_cast<std::uint8_t>(value >> (8 * index));
  }
  return bytes;
}

struct ClassKey {
  std::uint32_t protectionClass = 0;
  std::uint32_t wrap = 0;
  Bytes wrapped;
};

void appendClassKey(Bytes& blob, const ClassKey& key, SeededRandom& random) {
  appendItem(blob, "UUID", random.bytes(16));
  appendItem(blob, "CLAS", key.protectionClass);
  appendItem(blob, "WRAP", key.wrap);
  appendItem(blob, "KTYP", 0U);
  appendItem(blob, "WPKY", key.wrapped);
}

void appendHeader(Bytes& blob, SeededRandom& random) {
  appendItem(blob, "VERS", 5U);
  appendItem(blob, "TYPE", 1U);
  appendItem(blob, "UUID", random.bytes(16));
  appendItem(blob, "HMCK", random.bytes(40));
  appendItem(blob, "WRAP", 0U);
}

}  // namespace

Bytes KeyBag::persistentKey(std::uint32_t protectionClass, ByteView fileKey) const {
  Bytes key;
  for (unsigned shift = 0; shift < 32; shift += 8) key.push_back(static_cast<std::uint8_t>(protectionClass >> shift));
  const auto found = classKeys.find(protectionClass);
  append(key, found == classKeys.end() ? Bytes(40, 0x5A) : aesWrap(found->second, fileKey));
  return key;
}

void appendItem(Bytes& blob, std::string_view tag, ByteView value) {
  append(blob, bytesOf(tag));
  append(blob, bigEndian(value.size(), 4));
  append(blob, value);
}

void appendItem(Bytes& blob, std::string_view tag, std::uint32_t value) { appendItem(blob, tag, bigEndian(value, 4)); }

void appendWideItem(Bytes& blob, std::string_view tag, std::uint64_t value) {
  appendItem(blob, tag, bigEndian(value, 8));
}

Bytes passwordKey(const KeyBagOptions& options, ByteView salt, ByteView doubleSalt) {
  Bytes secret = bytesOf(options.password);
  if (options.doubleIterations.value_or(0) > 0 && !doubleSalt.empty()) {
    secret = pbkdf2(Digest::sha256, secret, doubleSalt, *options.doubleIterations);
  }
  return pbkdf2(Digest::sha1, secret, salt, options.iterations);
}

KeyBag buildKeyBag(const KeyBagOptions& options, SeededRandom& random) {
  KeyBag bag;
  const Bytes salt = random.bytes(20);
  const Bytes doubleSalt = options.emptyDoubleSalt ? Bytes{} : random.bytes(20);
  bag.passwordKey = passwordKey(options, salt, doubleSalt);

  appendHeader(bag.blob, random);
  appendItem(bag.blob, "SALT", salt);
  if (options.wideIterations) {
    appendWideItem(bag.blob, "ITER", options.iterations);
  } else {
    appendItem(bag.blob, "ITER", options.iterations);
  }
  if (options.doubleIterations) {
    appendItem(bag.blob, "DPWT", 1U);
    appendItem(bag.blob, "DPIC", *options.doubleIterations);
    appendItem(bag.blob, "DPSL", doubleSalt);
  }
  for (const std::uint32_t number : options.passwordClasses) {
    const Bytes key = random.bytes(32);
    appendClassKey(bag.blob, {number, wrappedWithPassword, aesWrap(bag.passwordKey, key)}, random);
    bag.classKeys[number] = key;
  }
  for (const std::uint32_t number : options.deviceClasses) {
    appendClassKey(bag.blob, {number, wrappedWithDeviceKey, random.bytes(40)}, random);
  }
  return bag;
}

}  // namespace Fixture
