#pragma once

#include <cstdint>
#include <optional>

#include "TidewellCore/Crypto/SecretBytes.h"
#include "TidewellCore/Platform/Bytes.h"

// How a key bag turns its password into a key.
struct KeyDerivation {
  Bytes salt;                                    // of the SHA-1 derivation
  std::int64_t iterations = 0;                   // of the SHA-1 derivation
  std::optional<Bytes> doubleSalt;               // of the SHA-256 derivation that precedes it
  std::optional<std::int64_t> doubleIterations;  // of the SHA-256 derivation that precedes it

  bool operator==(const KeyDerivation&) const = default;
};

// What a derivation made of a password: as secret as the password itself, and
// of use only to bags of that derivation. Keeping it saves the seconds of another one.
struct PasswordKey {
  KeyDerivation derivation;
  SecretBytes key;

  bool operator==(const PasswordKey&) const = default;
};

// The keys that go in and out of an unlock; either may be null.
struct KeyReuse {
  const PasswordKey* kept = nullptr;           // of an earlier unlock: tried before the password
  std::optional<PasswordKey>* used = nullptr;  // gets the key that opened the bag
};
