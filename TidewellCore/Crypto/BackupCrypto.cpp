#include "TidewellCore/Crypto/BackupCrypto.h"

#include <algorithm>

#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/TidewellError.h"

namespace {

constexpr std::size_t semiblock = 8;

std::int64_t signedSize(std::size_t size) { return static_cast<std::int64_t>(size); }

// Appends plaintext and never goes beyond the size that the file is known to have.
class CappedWriter {
 public:
  CappedWriter(FileDescriptor& file, std::optional<std::int64_t> limit) : file_(file), limit_(limit) {}

  void write(ByteView bytes) {
    if (limit_)
      bytes = bytes.first(
          static_cast<std::size_t>(std::clamp<std::int64_t>(*limit_ - written_, 0, signedSize(bytes.size()))));
    file_.write(bytes);
    written_ += signedSize(bytes.size());
  }

  std::int64_t written() const { return written_; }

 private:
  FileDescriptor& file_;
  std::optional<std::int64_t> limit_;
  std::int64_t written_ = 0;
};

// Enough for all of a small file, whose end is then seen by the first read.
std::size_t sliceSizeFor(std::int64_t storedSize) {
  const auto whole = static_cast<std::size_t>(storedSize) + BackupCrypto::blockSize;
  return std::min(BackupCrypto::chunkSize, whole / BackupCrypto::blockSize * BackupCrypto::blockSize);
}

// What the plaintext has at least, before anything is decrypted.
std::int64_t leastPlaintextSize(std::int64_t storedSize, std::optional<std::int64_t> expectedSize) {
  return expectedSize ? std::min(*expectedSize, storedSize) : storedSize - signedSize(BackupCrypto::blockSize);
}

struct Tail {
  std::int64_t fileSize = 0;
  Bytes plaintext;  // of the last blocks, with their padding; empty where the file is not whole blocks
};

// The last `count` blocks of a file, or all where it has no more.
Tail lastBlocks(const std::filesystem::path& source, ByteView key, std::int64_t count) {
  FileDescriptor input = FileDescriptor::openForReading(source);
  const std::int64_t size = input.size();
  const std::int64_t blocks = std::min(size / signedSize(BackupCrypto::blockSize), count);
  if (blocks == 0 || size % signedSize(BackupCrypto::blockSize) != 0) return {.fileSize = size};
  const std::size_t length = static_cast<std::size_t>(blocks) * BackupCrypto::blockSize;
  // A block is decrypted with the ciphertext block before it; the first with the zero IV.
  Bytes tail(BackupCrypto::blockSize + length);
  const bool isAll = size == signedSize(length);
  const std::span<std::uint8_t> read = std::span(tail).subspan(isAll ? BackupCrypto::blockSize : 0);
  input.seek(size - signedSize(read.size()));
  if (input.read(read) != read.size()) return {.fileSize = size};
  const ByteView all(tail);
  return {.fileSize = size,
          .plaintext = BackupCrypto::cbcDecryptRaw(key, all.first(BackupCrypto::blockSize), all.last(length))};
}

}  // namespace

SecretBytes BackupCrypto::pbkdf2(ByteView password, ByteView salt, std::uint32_t iterations, std::size_t keyLength,
                                 PBKDF2Hash hash, const CancellationCheck& isCancelled) {
  SecretBytes key(keyLength);
  const auto derive = hash == PBKDF2Hash::sha256 ? tw_pbkdf2_hmac_sha256 : tw_pbkdf2_hmac_sha1;
  if (derive(password.data(), password.size(), salt.data(), salt.size(), iterations, key.data(), key.size(),
             isCancelled) != 0) {
    throw TidewellError::ioFailure("Could not derive the backup key.");
  }
  return key;
}

SecretBytes BackupCrypto::aesECB(ByteView key, ByteView block, bool encrypt) {
  if (block.size() != blockSize) throw TidewellError::ioFailure("AES block must be 16 bytes.");
  SecretBytes result(blockSize);
  if (tw_aes_ecb_block(key.data(), key.size(), block.data(), result.data(), encrypt) != 0) {
    throw TidewellError::ioFailure("AES operation failed.");
  }
  return result;
}

SecretBytes BackupCrypto::aesCBC(ByteView key, ByteView iv, ByteView input, CBCOptions options) {
  if ((key.size() != 16 && key.size() != 32) || iv.size() != blockSize) {
    throw TidewellError::ioFailure("AES-CBC used an unexpected key or IV size.");
  }
  SecretBytes result(input.size() + blockSize);
  std::size_t length = result.size();
  if (tw_aes256_cbc_crypt(key.data(), key.size(), iv.data(), input.data(), input.size(), result.data(), &length,
                          options.encrypt, options.pkcs7) != 0) {
    throw TidewellError::ioFailure("Could not decrypt a backup file.");
  }
  result.resize(length);
  return result;
}

Bytes BackupCrypto::cbcDecryptRaw(ByteView key, ByteView iv, ByteView ciphertext) {
  if (ciphertext.empty()) throw TidewellError::ioFailure("Could not decrypt a backup file.");
  Bytes plaintext(ciphertext.size());
  CBCDecryptor(key, iv).decrypt(ciphertext, plaintext);
  return plaintext;
}

std::optional<std::size_t> BackupCrypto::pkcs7UnpaddedSize(ByteView bytes) {
  if (bytes.empty()) return std::nullopt;
  const std::uint8_t padding = bytes.back();
  if (padding == 0 || padding > blockSize || padding > bytes.size()) return std::nullopt;
  const bool isUniform = std::ranges::all_of(bytes.last(padding), [&](std::uint8_t byte) { return byte == padding; });
  return isUniform ? std::optional(bytes.size() - padding) : std::nullopt;
}

std::optional<Bytes> BackupCrypto::pkcs7Unpad(ByteView bytes) {
  const auto size = pkcs7UnpaddedSize(bytes);
  if (!size) return std::nullopt;
  return Bytes(bytes.begin(), bytes.begin() + signedSize(*size));
}

SecretBytes BackupCrypto::aesUnwrap(ByteView kek, ByteView wrapped) {
  if (kek.size() != 32 || wrapped.size() < 3 * semiblock || wrapped.size() % semiblock != 0) {
    throw TidewellError::ioFailure("A backup key has an unexpected size.");
  }
  const std::size_t n = wrapped.size() / semiblock - 1;
  // The block A ‖ R[i] that each step decrypts; A stays in its first half throughout.
  SecretBytes block(wrapped.begin(), wrapped.begin() + semiblock);
  block.resize(blockSize);
  SecretBytes registers(wrapped.begin() + semiblock, wrapped.end());
  for (std::size_t j = 6; j-- > 0;) {
    for (std::size_t i = n; i > 0; --i) {
      std::uint64_t t = n * j + i;
      for (std::size_t byte = semiblock; byte-- > 0; t >>= 8) block[byte] ^= static_cast<std::uint8_t>(t);
      const auto r = registers.begin() + signedSize((i - 1) * semiblock);
      std::copy_n(r, semiblock, block.begin() + semiblock);
      block = aesECB(kek, block, /*encrypt=*/false);
      std::copy_n(block.begin() + semiblock, semiblock, r);
    }
  }
  if (!std::equal(rfc3394IV.begin(), rfc3394IV.end(), block.begin())) throw TidewellError::wrongBackupPassword();
  return registers;
}

Bytes BackupCrypto::decryptBackupPayload(ByteView key, ByteView ciphertext, std::optional<std::int64_t> expectedSize) {
  const ByteView blocks = ciphertext.first(ciphertext.size() / blockSize * blockSize);
  Bytes plaintext = cbcDecryptRaw(key, zeroIV, blocks);
  if (expectedSize && *expectedSize >= 0 && *expectedSize <= signedSize(plaintext.size())) {
    plaintext.resize(static_cast<std::size_t>(*expectedSize));
  } else if (const auto size = pkcs7UnpaddedSize(plaintext)) {
    plaintext.resize(*size);
  }
  return plaintext;
}

BackupCrypto::DecryptedFile BackupCrypto::decryptFile(const std::filesystem::path& source, FileDescriptor& output,
                                                      ByteView key, std::optional<std::int64_t> expectedSize,
                                                      const CancellationCheck& isCancelled) {
  FileDescriptor input = FileDescriptor::openForReading(source);
  const std::int64_t size = input.size();
  output.requireLength(leastPlaintextSize(size, expectedSize));
  CBCDecryptor decryptor(key, zeroIV);
  CappedWriter writer(output, expectedSize);
  // The last block so far, already decrypted, stands before the slice that is read: it may be padding.
  const std::size_t sliceSize = sliceSizeFor(size);
  Bytes buffer(blockSize + sliceSize);
  const std::span<std::uint8_t> slice = std::span(buffer).subspan(blockSize);
  std::size_t held = 0;
  std::int64_t decrypted = 0;
  for (bool isLast = false; !isLast;) {
    throwIfCancelled(isCancelled);
    const std::size_t count = input.read(slice);
    isLast = count < sliceSize;
    const std::span<std::uint8_t> blocks = slice.first(count / blockSize * blockSize);
    if (blocks.empty()) break;
    decryptor.decrypt(blocks, blocks);
    decrypted += signedSize(blocks.size());
    writer.write(ByteView(buffer).subspan(blockSize - held, held + blocks.size() - blockSize));
    std::ranges::copy(blocks.last(blockSize), buffer.begin());
    held = blockSize;
  }
  const ByteView last = ByteView(buffer).first(held);
  const std::optional<std::size_t> unpadded = pkcs7UnpaddedSize(last);
  writer.write(last.first(expectedSize ? held : unpadded.value_or(held)));
  const std::int64_t written = writer.written();
  const bool isAsPadded = unpadded && written == decrypted - signedSize(held - *unpadded);
  return {.byteCount = written, .isBorneOut = isAsPadded || (expectedSize == decrypted && written == decrypted)};
}

std::optional<std::int64_t> BackupCrypto::paddedFileSize(const std::filesystem::path& source, ByteView key) {
  const Tail tail = lastBlocks(source, key, 1);
  const auto unpadded = pkcs7UnpaddedSize(tail.plaintext);
  if (!unpadded) return std::nullopt;
  return tail.fileSize - signedSize(tail.plaintext.size() - *unpadded);
}

std::optional<Bytes> BackupCrypto::wholeEnd(const std::filesystem::path& source, ByteView key,
                                            std::int64_t expectedSize) {
  Tail tail = lastBlocks(source, key, 2);
  const auto unpadded = pkcs7UnpaddedSize(tail.plaintext);
  const bool isAsPadded = unpadded && expectedSize == tail.fileSize - signedSize(tail.plaintext.size() - *unpadded);
  if (isAsPadded) {
    tail.plaintext.resize(*unpadded);
  } else if (expectedSize != tail.fileSize || tail.plaintext.empty()) {
    return std::nullopt;
  }
  return std::move(tail.plaintext);
}
