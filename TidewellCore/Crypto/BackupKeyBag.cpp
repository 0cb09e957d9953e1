#include "TidewellCore/Crypto/BackupKeyBag.h"

#include <fmt/format.h>

#include <algorithm>

#include "TidewellCore/Crypto/BackupCrypto.h"
#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/TidewellError.h"

namespace {

constexpr std::size_t itemHeaderSize = 8;
constexpr std::size_t classNumberSize = 4;
constexpr std::size_t shortestPersistentKey = 8;
constexpr std::size_t derivedKeySize = 32;
constexpr std::uint32_t wrappedWithPassword = 2;
// Phones ask for 10,000,000 rounds, a few seconds; a damaged count must not keep
// anybody waiting for hours.
constexpr std::int64_t mostIterations = 100'000'000;
constexpr std::size_t mostItems = 4096;  // they write about sixty

constexpr const char* excessive =
    "The key bag of this encrypted backup asks for more work than an iPhone’s ever does, so it is damaged or was "
    "tampered with. Use another copy of the backup.";

Bytes copied(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

// Numbers have 4 bytes, or 8 of which the low half counts; anything else reads as 0.
std::uint32_t integer(ByteView value) {
  if (value.size() != 4 && value.size() != 8) return 0;
  return static_cast<std::uint32_t>(readBigEndian(value.last(4)));
}

bool asksForTooMuch(const BackupKeyBag& bag) {
  return bag.iterations > mostIterations || bag.doubleIterations.value_or(0) > mostIterations;
}

class Parser {
 public:
  BackupKeyBag parse(ByteView data) {
    for (std::size_t count = 1; data.size() >= itemHeaderSize; ++count) {
      if (count > mostItems) throw TidewellError::ioFailure(excessive);
      const auto length = static_cast<std::size_t>(readBigEndian(data.subspan(4, 4)));
      if (length > data.size() - itemHeaderSize) throw TidewellError::ioFailure("The backup key bag is truncated.");
      item(textOf(data.first(4)), data.subspan(itemHeaderSize, length));
      data = data.subspan(itemHeaderSize + length);
    }
    closeClassKey();
    if (bag_.salt.empty() || bag_.iterations == 0 || bag_.classKeys.empty()) {
      throw TidewellError::ioFailure("This encrypted backup is missing a usable key bag.");
    }
    if (asksForTooMuch(bag_)) throw TidewellError::ioFailure(excessive);
    return std::move(bag_);
  }

 private:
  void item(std::string_view tag, ByteView value) {
    if (tag == "UUID") return uuid(value);
    if (tag == "WRAP") {
      (classKey_ ? classKey_->wrap : bag_.wrap) = integer(value);
    } else if (tag == "TYPE") {
      bag_.type = integer(value);
    } else if (tag == "SALT") {
      bag_.salt = copied(value);
    } else if (tag == "ITER") {
      bag_.iterations = integer(value);
    } else if (tag == "DPSL") {
      bag_.doubleSalt = copied(value);
    } else if (tag == "DPIC") {
      bag_.doubleIterations = integer(value);
    } else if (classKey_) {
      classKeyItem(tag, value);
    }
  }

  void classKeyItem(std::string_view tag, ByteView value) {
    if (tag == "CLAS") classKey_->clas = integer(value);
    if (tag == "KTYP") classKey_->keyType = integer(value);
    if (tag == "WPKY") classKey_->wrappedKey = copied(value);
  }

  // The first identifier is the bag's; each later one begins a class key.
  void uuid(ByteView value) {
    if (!hasBagUUID_) {
      bag_.uuid = copied(value);
      hasBagUUID_ = true;
      return;
    }
    closeClassKey();
    classKey_ = BackupClassKey{.uuid = copied(value)};
  }

  void closeClassKey() {
    if (classKey_) bag_.classKeys.insert_or_assign(classKey_->clas, *classKey_);
    classKey_.reset();
  }

  BackupKeyBag bag_;
  bool hasBagUUID_ = false;
  std::optional<BackupClassKey> classKey_;
};

KeyDerivation derivationOf(const BackupKeyBag& bag) {
  return {.salt = bag.salt,
          .iterations = bag.iterations,
          .doubleSalt = bag.doubleSalt,
          .doubleIterations = bag.doubleIterations};
}

bool isDouble(const KeyDerivation& derivation) {
  return derivation.doubleSalt && !derivation.doubleSalt->empty() && derivation.doubleIterations.value_or(0) > 0;
}

// Since iOS 10.2 the password goes through SHA-256 rounds before the SHA-1 rounds of older bags.
SecretBytes derived(const KeyDerivation& derivation, std::string_view password, const CancellationCheck& isCancelled) {
  using enum BackupCrypto::PBKDF2Hash;
  SecretBytes input(password.begin(), password.end());
  if (isDouble(derivation)) {
    const auto rounds = static_cast<std::uint32_t>(*derivation.doubleIterations);
    input = BackupCrypto::pbkdf2(input, *derivation.doubleSalt, rounds, derivedKeySize, sha256, isCancelled);
    throwIfCancelled(isCancelled);
  }
  const auto rounds = static_cast<std::uint32_t>(derivation.iterations);
  return BackupCrypto::pbkdf2(input, derivation.salt, rounds, derivedKeySize, sha1, isCancelled);
}

void unwrapClassKeys(BackupKeyBag& bag, const SecretBytes& key) {
  for (auto& [number, classKey] : bag.classKeys) {
    if ((classKey.wrap & wrappedWithPassword) == 0) continue;
    classKey.unwrappedKey = BackupCrypto::aesUnwrap(key, classKey.wrappedKey);
  }
  if (bag.unwrappedClassKeyCount() == 0) throw TidewellError::wrongBackupPassword();
}

}  // namespace

BackupKeyBag BackupKeyBag::parse(ByteView data) { return Parser().parse(data); }

PasswordKey BackupKeyBag::unlock(std::string_view password, const CancellationCheck& isCancelled) {
  throwIfCancelled(isCancelled);
  PasswordKey key{.derivation = derivationOf(*this)};
  key.key = derived(key.derivation, password, isCancelled);
  throwIfCancelled(isCancelled);
  unwrapClassKeys(*this, key.key);
  return key;
}

bool BackupKeyBag::unlock(const PasswordKey& key) {
  if (key.derivation != derivationOf(*this)) return false;
  BackupKeyBag unlocked = *this;
  try {
    unwrapClassKeys(unlocked, key.key);
  } catch (const TidewellError&) {
    return false;
  }
  *this = std::move(unlocked);
  return true;
}

std::size_t BackupKeyBag::unwrappedClassKeyCount() const {
  return static_cast<std::size_t>(
      std::ranges::count_if(classKeys, [](const auto& entry) { return entry.second.unwrappedKey.has_value(); }));
}

const SecretBytes& BackupKeyBag::key(std::uint32_t protectionClass) const {
  const auto found = classKeys.find(protectionClass);
  if (found == classKeys.end() || !found->second.unwrappedKey) {
    throw TidewellError::ioFailure(fmt::format("This backup is missing protection class {}.", protectionClass));
  }
  return *found->second.unwrappedKey;
}

std::optional<std::uint32_t> BackupKeyBag::protectionClass(ByteView persistentKey) {
  if (persistentKey.size() < classNumberSize) return std::nullopt;
  std::uint32_t number = 0;
  for (std::size_t i = classNumberSize; i-- > 0;) number = number << 8 | persistentKey[i];
  return number;
}

SecretBytes BackupKeyBag::unwrapPersistentKey(ByteView persistentKey) const {
  if (persistentKey.size() < shortestPersistentKey) {
    throw TidewellError::ioFailure("A backup file is missing its encryption key.");
  }
  const SecretBytes& classKey = key(*protectionClass(persistentKey));
  return BackupCrypto::aesUnwrap(classKey, persistentKey.subspan(classNumberSize));
}
