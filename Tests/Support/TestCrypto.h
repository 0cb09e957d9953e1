#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Tests/Support/Bytes.h"

// The primitives a backup is locked with, straight from OpenSSL, so that what the fixtures write
// is judged by another implementation than the one under test. Failures throw std::runtime_error.
namespace Fixture {

enum class Digest { sha1, sha256 };
enum class Padding { none, pkcs7 };

std::string hex(ByteView bytes);
std::string sha1Hex(ByteView bytes);
std::string sha256Base64(std::string_view text);

Bytes pbkdf2(Digest digest, ByteView password, ByteView salt, std::uint32_t rounds, std::size_t length = 32);

// RFC 3394 with the default initial value; `kek` holds 32 bytes.
Bytes aesWrap(ByteView kek, ByteView key);
// Absent when the integrity check fails.
std::optional<Bytes> aesUnwrap(ByteView kek, ByteView wrapped);

// AES-256-CBC with an IV of zeroes. Without padding the input must be whole blocks of 16 bytes.
Bytes aesCbcEncrypt(ByteView key, ByteView plaintext, Padding padding = Padding::pkcs7);
Bytes aesCbcDecrypt(ByteView key, ByteView ciphertext, Padding padding = Padding::pkcs7);

}  // namespace Fixture
