#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Cancellation.h"

// The one door to the system's crypto library. The functions return 0 for
// success and -1 for failure; null pointers and zero lengths fail.

// RFC 8018 section 5.2. Asks `isCancelled` several times a second, and throws
// TidewellError::cancelled when it says so.
int tw_pbkdf2_hmac_sha1(const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
                        std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength,
                        const CancellationCheck& isCancelled);
int tw_pbkdf2_hmac_sha256(const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
                          std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength,
                          const CancellationCheck& isCancelled);

// One block of 16 bytes; keys of 16 or 32 bytes.
int tw_aes_ecb_block(const std::uint8_t* key, std::size_t keyLength, const std::uint8_t* in, std::uint8_t* out,
                     bool encrypt);

// A whole buffer; `inOutLength` holds the room in `out` before and the bytes written after.
int tw_aes256_cbc_crypt(const std::uint8_t* key, std::size_t keyLength, const std::uint8_t* iv, const std::uint8_t* in,
                        std::size_t inLength, std::uint8_t* out, std::size_t* inOutLength, bool encrypt, bool pkcs7);

// FIPS 180-4. A library without them is a fault of the program.
std::array<std::uint8_t, 20> sha1(ByteView bytes);
std::array<std::uint8_t, 32> sha256(ByteView bytes);

// SHA-256 of what comes in pieces.
class SHA256 {
 public:
  SHA256();
  ~SHA256();
  SHA256(const SHA256&) = delete;
  SHA256& operator=(const SHA256&) = delete;

  void add(ByteView bytes);
  // Once, at the end.
  std::array<std::uint8_t, 32> finish();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

// Overwrites memory that held a secret, in a way that is not optimised away.
void tw_wipe(void* memory, std::size_t length);

// AES-CBC decryption of a stream: one context for all of its slices, padding left in place.
class CBCDecryptor {
 public:
  // Throws TidewellError::ioFailure unless the key has 16 or 32 bytes and the IV 16.
  CBCDecryptor(ByteView key, ByteView iv);
  ~CBCDecryptor();
  CBCDecryptor(const CBCDecryptor&) = delete;
  CBCDecryptor& operator=(const CBCDecryptor&) = delete;

  // Decrypts whole blocks into `plaintext`, which is as long and may be the
  // same memory. Throws TidewellError::ioFailure.
  void decrypt(ByteView ciphertext, std::span<std::uint8_t> plaintext);

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};
