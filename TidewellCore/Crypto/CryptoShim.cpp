#include "TidewellCore/Crypto/CryptoShim.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <limits>

#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/TidewellError.h"

namespace {

constexpr std::size_t blockSize = 16;
constexpr int success = 0;
constexpr int failure = -1;

struct ContextDeleter {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, ContextDeleter>;

bool fitsInt(std::size_t length) { return length <= static_cast<std::size_t>(std::numeric_limits<int>::max()); }

int pbkdf2(const EVP_MD* digest, const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
           std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength) {
  if (password == nullptr || salt == nullptr || out == nullptr) return failure;
  if (passwordLength == 0 || saltLength == 0 || rounds == 0 || outLength == 0) return failure;
  if (!fitsInt(passwordLength) || !fitsInt(saltLength) || !fitsInt(rounds) || !fitsInt(outLength)) return failure;
  const int done = PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(password), static_cast<int>(passwordLength), salt,
                                     static_cast<int>(saltLength), static_cast<int>(rounds), digest,
                                     static_cast<int>(outLength), out);
  return done == 1 ? success : failure;
}

const EVP_CIPHER* ecbCipher(std::size_t keyLength) {
  if (keyLength == 16) return EVP_aes_128_ecb();
  return keyLength == 32 ? EVP_aes_256_ecb() : nullptr;
}

const EVP_CIPHER* cbcCipher(std::size_t keyLength) {
  if (keyLength == 16) return EVP_aes_128_cbc();
  return keyLength == 32 ? EVP_aes_256_cbc() : nullptr;
}

template <std::size_t length>
std::array<std::uint8_t, length> digestOf(const EVP_MD* kind, ByteView bytes) {
  std::array<std::uint8_t, length> digest{};
  const int done = EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, kind, nullptr);
  precondition(done == 1, "a digest is missing");
  return digest;
}

// Null when the cipher cannot be set up.
CipherContext makeContext(const EVP_CIPHER* cipher, const std::uint8_t* key, const std::uint8_t* iv, bool encrypt,
                          bool pkcs7) {
  CipherContext context(EVP_CIPHER_CTX_new());
  if (!context || cipher == nullptr) return nullptr;
  if (EVP_CipherInit_ex(context.get(), cipher, nullptr, key, iv, encrypt ? 1 : 0) != 1) return nullptr;
  EVP_CIPHER_CTX_set_padding(context.get(), pkcs7 ? 1 : 0);
  return context;
}

}  // namespace

int tw_pbkdf2_hmac_sha1(const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
                        std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength) {
  return pbkdf2(EVP_sha1(), password, passwordLength, salt, saltLength, rounds, out, outLength);
}

int tw_pbkdf2_hmac_sha256(const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
                          std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength) {
  return pbkdf2(EVP_sha256(), password, passwordLength, salt, saltLength, rounds, out, outLength);
}

int tw_aes_ecb_block(const std::uint8_t* key, std::size_t keyLength, const std::uint8_t* in, std::uint8_t* out,
                     bool encrypt) {
  if (key == nullptr || in == nullptr || out == nullptr) return failure;
  const CipherContext context = makeContext(ecbCipher(keyLength), key, nullptr, encrypt, /*pkcs7=*/false);
  int written = 0;
  if (!context || EVP_CipherUpdate(context.get(), out, &written, in, blockSize) != 1) return failure;
  return written == static_cast<int>(blockSize) ? success : failure;
}

int tw_aes256_cbc_crypt(const std::uint8_t* key, std::size_t keyLength, const std::uint8_t* iv, const std::uint8_t* in,
                        std::size_t inLength, std::uint8_t* out, std::size_t* inOutLength, bool encrypt, bool pkcs7) {
  if (key == nullptr || iv == nullptr || in == nullptr || out == nullptr || inOutLength == nullptr) return failure;
  // Encryption with padding writes up to one block more than it reads.
  const std::size_t needed = encrypt && pkcs7 ? (inLength / blockSize + 1) * blockSize : inLength;
  if (inLength == 0 || *inOutLength < needed) return failure;
  const CipherContext context = makeContext(cbcCipher(keyLength), key, iv, encrypt, pkcs7);
  if (!context) return failure;
  constexpr std::size_t slice = 1 << 30;  // the library counts in int
  std::size_t total = 0;
  for (std::size_t offset = 0; offset < inLength; offset += slice) {
    const std::size_t length = std::min(slice, inLength - offset);
    int written = 0;
    if (EVP_CipherUpdate(context.get(), out + total, &written, in + offset, static_cast<int>(length)) != 1)
      return failure;
    total += static_cast<std::size_t>(written);
  }
  int written = 0;
  if (EVP_CipherFinal_ex(context.get(), out + total, &written) != 1) return failure;
  *inOutLength = total + static_cast<std::size_t>(written);
  return success;
}

std::array<std::uint8_t, 20> sha1(ByteView bytes) { return digestOf<20>(EVP_sha1(), bytes); }
std::array<std::uint8_t, 32> sha256(ByteView bytes) { return digestOf<32>(EVP_sha256(), bytes); }

void tw_wipe(void* memory, std::size_t length) { OPENSSL_cleanse(memory, length); }

struct CBCDecryptor::Context {
  CipherContext cipher;
};

CBCDecryptor::CBCDecryptor(ByteView key, ByteView iv) : context_(std::make_unique<Context>()) {
  if (cbcCipher(key.size()) == nullptr || iv.size() != blockSize) {
    throw TidewellError::ioFailure("AES-CBC used an unexpected key or IV size.");
  }
  context_->cipher = makeContext(cbcCipher(key.size()), key.data(), iv.data(), /*encrypt=*/false, /*pkcs7=*/false);
  if (!context_->cipher) throw TidewellError::ioFailure("Could not decrypt a backup file.");
}

CBCDecryptor::~CBCDecryptor() = default;

void CBCDecryptor::decrypt(ByteView ciphertext, std::span<std::uint8_t> plaintext) {
  int written = 0;
  const bool fits =
      ciphertext.size() % blockSize == 0 && plaintext.size() >= ciphertext.size() && fitsInt(ciphertext.size());
  if (!fits || EVP_CipherUpdate(context_->cipher.get(), plaintext.data(), &written, ciphertext.data(),
                                static_cast<int>(ciphertext.size())) != 1) {
    throw TidewellError::ioFailure("Could not decrypt a backup file.");
  }
}
