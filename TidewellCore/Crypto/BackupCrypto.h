#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "TidewellCore/Crypto/SecretBytes.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/Platform/FileDescriptor.h"

// What opens an encrypted iPhone backup. All sizes are in bytes; failures are
// TidewellError::ioFailure unless a function says otherwise.
namespace BackupCrypto {

inline constexpr std::size_t blockSize = 16;
// Every backup file and Manifest.db begin their CBC chain with this IV.
inline constexpr std::array<std::uint8_t, blockSize> zeroIV{};
// RFC 3394 section 2.2.3.1: what an unwrapped key must begin with.
inline constexpr std::array<std::uint8_t, 8> rfc3394IV{0xA6, 0xA6, 0xA6, 0xA6, 0xA6, 0xA6, 0xA6, 0xA6};
// Files are read and decrypted in slices of this size.
inline constexpr std::size_t chunkSize = 262'144;

enum class PBKDF2Hash { sha1, sha256 };

// RFC 8018 section 5.2. Asks `isCancelled` several times a second.
SecretBytes pbkdf2(ByteView password, ByteView salt, std::uint32_t iterations, std::size_t keyLength, PBKDF2Hash hash,
                   const CancellationCheck& isCancelled = {});

// One block with a key of 16 or 32 bytes.
SecretBytes aesECB(ByteView key, ByteView block, bool encrypt);

struct CBCOptions {
  bool encrypt = false;
  bool pkcs7 = false;
};
SecretBytes aesCBC(ByteView key, ByteView iv, ByteView input, CBCOptions options);
// Whole blocks, padding left in place.
Bytes cbcDecryptRaw(ByteView key, ByteView iv, ByteView ciphertext);

// The length of `bytes` without its PKCS#7 padding (RFC 5652 section 6.3); absent when there is none.
std::optional<std::size_t> pkcs7UnpaddedSize(ByteView bytes);
std::optional<Bytes> pkcs7Unpad(ByteView bytes);

// RFC 3394 section 2.2.2. Throws TidewellError::wrongBackupPassword when the integrity check fails.
SecretBytes aesUnwrap(ByteView kek, ByteView wrapped);

// A whole payload in memory, cut to `expectedSize` or else to its padding.
Bytes decryptBackupPayload(ByteView key, ByteView ciphertext, std::optional<std::int64_t> expectedSize);

struct DecryptedFile {
  std::int64_t byteCount = 0;  // written
  // The padding says the same of the plaintext's length, or there is none and the plaintext fills all blocks. Where it
  // does not, the key may be another, or the end lost.
  bool isBorneOut = false;
};

// Decrypts a file into a new file, in slices.
// Cut to `expectedSize` or else to its padding. Fails at once with EFBIG when the
// file system takes no file of that size. On failure, and on
// TidewellError::cancelled, the part written is left for the caller to remove.
DecryptedFile decryptFile(const std::filesystem::path& source, FileDescriptor& output, ByteView key,
                          std::optional<std::int64_t> expectedSize, const CancellationCheck& isCancelled = {});

// What the last block of an encrypted file says of its plaintext's length;
// absent when the file is not whole blocks or its padding is invalid.
std::optional<std::int64_t> paddedFileSize(const std::filesystem::path& source, ByteView key);

// The last bytes of the plaintext, those of the last two blocks; absent where decryptFile would find its length not
// borne out.
std::optional<Bytes> wholeEnd(const std::filesystem::path& source, ByteView key, std::int64_t expectedSize);

}  // namespace BackupCrypto
