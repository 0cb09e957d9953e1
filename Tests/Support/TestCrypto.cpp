#include "Tests/Support/TestCrypto.h"

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <stdexcept>

namespace Fixture {

namespace {

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

void check(int result, const char* what) {
  if (result != 1) throw std::runtime_error(std::string("OpenSSL failed: ") + what);
}

struct CipherRun {
  const EVP_CIPHER* cipher = nullptr;
  bool encrypt = true;
  Padding padding = Padding::none;
};

CipherContext makeContext(const CipherRun& run, ByteView key, const std::uint8_t* iv) {
  if (key.size() != 32) throw std::runtime_error("An AES-256 key has 32 bytes.");
  CipherContext context(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
  EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
  check(EVP_CipherInit_ex(context.get(), run.cipher, nullptr, key.data(), iv, run.encrypt ? 1 : 0), "init");
  EVP_CIPHER_CTX_set_padding(context.get(), run.padding == Padding::pkcs7 ? 1 : 0);
  return context;
}

// Absent when the cipher refuses the input.
std::optional<Bytes> process(EVP_CIPHER_CTX* context, ByteView input) {
  Bytes output(input.size() + 32);
  int written = 0;
  if (EVP_CipherUpdate(context, output.data(), &written, input.data(), static_cast<int>(input.size())) != 1) {
    return std::nullopt;
  }
  int last = 0;
  if (EVP_CipherFinal_ex(context, output.data() + written, &last) != 1) return std::nullopt;
  output.resize(static_cast<std::size_t>(written) + static_cast<std::size_t>(last));
  return output;
}

std::optional<Bytes> processWrap(ByteView kek, ByteView input, bool encrypt) {
  return process(makeContext({EVP_aes_256_wrap(), encrypt, Padding::pkcs7}, kek, nullptr).get(), input);
}

Bytes processCbc(ByteView key, ByteView input, bool encrypt, Padding padding) {
  const std::array<std::uint8_t, 16> zeroIV{};
  auto output = process(makeContext({EVP_aes_256_cbc(), encrypt, padding}, key, zeroIV.data()).get(), input);
  if (!output) throw std::runtime_error("OpenSSL failed: AES-CBC");
  return *std::move(output);
}

}  // namespace

std::string hex(ByteView bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += digits[byte >> 4U];
    text += digits[byte & 15U];
  }
  return text;
}

std::string sha1Hex(ByteView bytes) {
  std::array<std::uint8_t, 20> digest{};
  check(EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha1(), nullptr), "SHA-1");
  return hex(digest);
}

std::string sha256Base64(std::string_view text) {
  std::array<std::uint8_t, 32> digest{};
  check(EVP_Digest(text.data(), text.size(), digest.data(), nullptr, EVP_sha256(), nullptr), "SHA-256");
  std::array<std::uint8_t, 45> encoded{};
  const int length = EVP_EncodeBlock(encoded.data(), digest.data(), static_cast<int>(digest.size()));
  return {encoded.begin(), encoded.begin() + length};
}

Bytes pbkdf2(Digest digest, ByteView password, ByteView salt, std::uint32_t rounds, std::size_t length) {
  Bytes key(length);
  check(PKCS5_PBKDF2_HMAC(reinterpret_cast<const char*>(password.data()), static_cast<int>(password.size()),
                          salt.data(), static_cast<int>(salt.size()), static_cast<int>(rounds),
                          digest == Digest::sha1 ? EVP_sha1() : EVP_sha256(), static_cast<int>(length), key.data()),
        "PBKDF2");
  return key;
}

Bytes aesWrap(ByteView kek, ByteView key) {
  auto wrapped = processWrap(kek, key, true);
  if (!wrapped) throw std::runtime_error("OpenSSL failed: AES key wrap");
  return *std::move(wrapped);
}

std::optional<Bytes> aesUnwrap(ByteView kek, ByteView wrapped) { return processWrap(kek, wrapped, false); }

Bytes aesCbcEncrypt(ByteView key, ByteView plaintext, Padding padding) {
  return processCbc(key, plaintext, true, padding);
}

Bytes aesCbcDecrypt(ByteView key, ByteView ciphertext, Padding padding) {
  return processCbc(key, ciphertext, false, padding);
}

}  // namespace Fixture
