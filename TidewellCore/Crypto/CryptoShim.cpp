#include "TidewellCore/Crypto/CryptoShim.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <new>

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

struct DigestDeleter {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, DigestDeleter>;

// A block of SHA-1 and SHA-256, which are 64 bytes; wiped when it goes.
struct SecretBlock {
  std::array<std::uint8_t, 64> bytes{};

  SecretBlock() = default;
  SecretBlock(const SecretBlock&) = default;
  SecretBlock& operator=(const SecretBlock&) = default;
  ~SecretBlock() { tw_wipe(bytes.data(), bytes.size()); }
};

// RFC 2104. What the key contributes is hashed once, not once a message.
class KeyedHash {
 public:
  KeyedHash(const EVP_MD* digest, ByteView key) : digest_(digest) {
    SecretBlock block;
    if (key.size() <= block.bytes.size()) {
      std::ranges::copy(key, block.bytes.begin());
    } else {
      isReady_ = EVP_Digest(key.data(), key.size(), block.bytes.data(), nullptr, digest_, nullptr) == 1;
    }
    isReady_ = isReady_ && begin(inner_, block, 0x36) && begin(outer_, block, 0x5C);
  }

  bool isReady() const { return isReady_ && running_; }
  std::size_t size() const { return static_cast<std::size_t>(EVP_MD_get_size(digest_)); }

  // Hashes one part after the other; the result may stand where a part did.
  bool hash(std::initializer_list<ByteView> parts, SecretBlock& result) const {
    if (EVP_MD_CTX_copy_ex(running_.get(), inner_.get()) != 1) return false;
    for (const ByteView part : parts) {
      if (EVP_DigestUpdate(running_.get(), part.data(), part.size()) != 1) return false;
    }
    return EVP_DigestFinal_ex(running_.get(), result.bytes.data(), nullptr) == 1 &&
           EVP_MD_CTX_copy_ex(running_.get(), outer_.get()) == 1 &&
           EVP_DigestUpdate(running_.get(), result.bytes.data(), size()) == 1 &&
           EVP_DigestFinal_ex(running_.get(), result.bytes.data(), nullptr) == 1;
  }

 private:
  bool begin(const DigestContext& context, SecretBlock key, std::uint8_t pad) const {
    for (std::uint8_t& byte : key.bytes) byte ^= pad;
    return context && EVP_DigestInit_ex(context.get(), digest_, nullptr) == 1 &&
           EVP_DigestUpdate(context.get(), key.bytes.data(), key.bytes.size()) == 1;
  }

  const EVP_MD* digest_;
  DigestContext inner_{EVP_MD_CTX_new()};
  DigestContext outer_{EVP_MD_CTX_new()};
  DigestContext running_{EVP_MD_CTX_new()};
  bool isReady_ = true;
};

// About a tenth of a second.
constexpr std::uint32_t roundsPerQuestion = 1 << 18;

// One block of the derived key, the first of which has the number 1.
bool deriveBlock(const KeyedHash& hash, ByteView salt, std::uint32_t number, std::uint32_t rounds, SecretBlock& sum,
                 const CancellationCheck& isCancelled) {
  const std::array<std::uint8_t, 4> suffix{static_cast<std::uint8_t>(number >> 24),
                                           static_cast<std::uint8_t>(number >> 16),
                                           static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
  SecretBlock last;
  if (!hash.hash({salt, suffix}, last)) return false;
  sum = last;
  const ByteView message = ByteView(last.bytes).first(hash.size());
  for (std::uint32_t round = 1; round < rounds; ++round) {
    if (round % roundsPerQuestion == 0) throwIfCancelled(isCancelled);
    if (!hash.hash({message}, last)) return false;
    for (std::size_t i = 0; i < message.size(); ++i) sum.bytes[i] ^= message[i];
  }
  return true;
}

int pbkdf2(const EVP_MD* digest, const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
           std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength,
           const CancellationCheck& isCancelled) {
  if (password == nullptr || salt == nullptr || out == nullptr) return failure;
  if (passwordLength == 0 || saltLength == 0 || rounds == 0 || outLength == 0) return failure;
  if (!fitsInt(passwordLength) || !fitsInt(saltLength) || !fitsInt(rounds) || !fitsInt(outLength)) return failure;
  const KeyedHash hash(digest, ByteView(password, passwordLength));
  if (!hash.isReady()) return failure;
  std::uint32_t number = 0;
  for (std::size_t done = 0; done < outLength; done += hash.size()) {
    SecretBlock block;
    if (!deriveBlock(hash, ByteView(salt, saltLength), ++number, rounds, block, isCancelled)) return failure;
    std::copy_n(block.bytes.begin(), std::min(hash.size(), outLength - done), out + done);
  }
  return success;
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
  if (done != 1) throw std::bad_alloc();  // nothing else fails here
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
                        std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength,
                        const CancellationCheck& isCancelled) {
  return pbkdf2(EVP_sha1(), password, passwordLength, salt, saltLength, rounds, out, outLength, isCancelled);
}

int tw_pbkdf2_hmac_sha256(const std::uint8_t* password, std::size_t passwordLength, const std::uint8_t* salt,
                          std::size_t saltLength, std::uint32_t rounds, std::uint8_t* out, std::size_t outLength,
                          const CancellationCheck& isCancelled) {
  return pbkdf2(EVP_sha256(), password, passwordLength, salt, saltLength, rounds, out, outLength, isCancelled);
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

std::array<std::uint8_t, 20> sha1(ByteView bytes) {
  // Looking the algorithm up costs more than hashing a path does; it is never given back.
  static const EVP_MD* const kind = EVP_MD_fetch(nullptr, "SHA1", nullptr);
  return digestOf<20>(kind == nullptr ? EVP_sha1() : kind, bytes);
}
std::array<std::uint8_t, 32> sha256(ByteView bytes) { return digestOf<32>(EVP_sha256(), bytes); }

struct SHA256::Context {
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> digest{EVP_MD_CTX_new(), EVP_MD_CTX_free};
};

SHA256::SHA256() : context_(std::make_unique<Context>()) {
  const bool isReady = context_->digest && EVP_DigestInit_ex(context_->digest.get(), EVP_sha256(), nullptr) == 1;
  if (!isReady) throw std::bad_alloc();
}
SHA256::~SHA256() = default;

void SHA256::add(ByteView bytes) {
  if (EVP_DigestUpdate(context_->digest.get(), bytes.data(), bytes.size()) != 1) throw std::bad_alloc();
}

std::array<std::uint8_t, 32> SHA256::finish() {
  std::array<std::uint8_t, 32> digest{};
  if (EVP_DigestFinal_ex(context_->digest.get(), digest.data(), nullptr) != 1) throw std::bad_alloc();
  return digest;
}

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
