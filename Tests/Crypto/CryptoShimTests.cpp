#include "TidewellCore/Crypto/CryptoShim.h"

#include <gtest/gtest.h>

#include <array>

#include "Tests/Support/Failures.h"
#include "Tests/Support/Hex.h"
#include "Tests/Support/TestCrypto.h"

namespace {

using Fixture::failsWith;

constexpr int success = 0;
constexpr int failure = -1;

const Bytes key(32, 1), iv(16, 2), block(16, 3);

TEST(CryptoShim, DerivationRefusesNullPointersAndZeroLengths) {
  for (const auto derive : {tw_pbkdf2_hmac_sha1, tw_pbkdf2_hmac_sha256}) {
    std::array<std::uint8_t, 4> out{};
    const std::uint8_t* p = key.data();
    EXPECT_EQ(derive(p, 8, p, 8, 1, out.data(), out.size(), {}), success);
    EXPECT_EQ(derive(nullptr, 8, p, 8, 1, out.data(), out.size(), {}), failure);
    EXPECT_EQ(derive(p, 0, p, 8, 1, out.data(), out.size(), {}), failure);
    EXPECT_EQ(derive(p, 8, nullptr, 8, 1, out.data(), out.size(), {}), failure);
    EXPECT_EQ(derive(p, 8, p, 0, 1, out.data(), out.size(), {}), failure);
    EXPECT_EQ(derive(p, 8, p, 8, 0, out.data(), out.size(), {}), failure);
    EXPECT_EQ(derive(p, 8, p, 8, 1, nullptr, out.size(), {}), failure);
    EXPECT_EQ(derive(p, 8, p, 8, 1, out.data(), 0, {}), failure);
  }
}

TEST(CryptoShim, DerivationRefusesCountsThatTheLibraryWouldTakeForNegative) {
  std::array<std::uint8_t, 4> out{};
  EXPECT_EQ(tw_pbkdf2_hmac_sha1(key.data(), 8, key.data(), 8, 0x80000000, out.data(), out.size(), {}), failure);
}

TEST(CryptoShim, ABlockNeedsAKeyOf16Or32Bytes) {
  Bytes out(16);
  for (std::size_t length = 0; length <= 32; ++length) {
    const int expected = length == 16 || length == 32 ? success : failure;
    EXPECT_EQ(tw_aes_ecb_block(key.data(), length, block.data(), out.data(), true), expected) << length;
  }
  EXPECT_EQ(tw_aes_ecb_block(nullptr, 32, block.data(), out.data(), true), failure);
  EXPECT_EQ(tw_aes_ecb_block(key.data(), 32, nullptr, out.data(), true), failure);
  EXPECT_EQ(tw_aes_ecb_block(key.data(), 32, block.data(), nullptr, true), failure);
}

TEST(CryptoShim, ABufferNeedsItsKeyItsIVAndRoom) {
  Bytes out(32);
  const auto crypt = [&](const Bytes* useKey, std::size_t keyLength, const Bytes* useIV, std::size_t inLength,
                         std::size_t room, bool pkcs7) {
    return tw_aes256_cbc_crypt(useKey == nullptr ? nullptr : useKey->data(), keyLength,
                               useIV == nullptr ? nullptr : useIV->data(), block.data(), inLength, out.data(), &room,
                               /*encrypt=*/true, pkcs7);
  };
  EXPECT_EQ(crypt(&key, 32, &iv, 16, 16, false), success);
  EXPECT_EQ(crypt(&key, 16, &iv, 16, 16, false), success);
  EXPECT_EQ(crypt(&key, 32, &iv, 16, 32, true), success);
  EXPECT_EQ(crypt(&key, 24, &iv, 16, 16, false), failure);
  EXPECT_EQ(crypt(nullptr, 32, &iv, 16, 16, false), failure);
  EXPECT_EQ(crypt(&key, 32, nullptr, 16, 16, false), failure);
  EXPECT_EQ(crypt(&key, 32, &iv, 0, 16, false), failure);
  EXPECT_EQ(crypt(&key, 32, &iv, 15, 16, false), failure) << "no whole block and no padding";
  EXPECT_EQ(crypt(&key, 32, &iv, 16, 15, false), failure) << "no room";
  EXPECT_EQ(crypt(&key, 32, &iv, 16, 31, true), failure) << "no room for the padding";
  EXPECT_EQ(tw_aes256_cbc_crypt(key.data(), 32, iv.data(), block.data(), 16, out.data(), nullptr, true, false),
            failure);
}

TEST(CryptoShim, TheProducedLengthIsWrittenBack) {
  Bytes out(32);
  std::size_t length = out.size();
  ASSERT_EQ(tw_aes256_cbc_crypt(key.data(), 32, iv.data(), block.data(), 5, out.data(), &length, true, true), success);
  EXPECT_EQ(length, 16u);
  Bytes plain(16);
  std::size_t plainLength = plain.size();
  ASSERT_EQ(tw_aes256_cbc_crypt(key.data(), 32, iv.data(), out.data(), length, plain.data(), &plainLength, false, true),
            success);
  EXPECT_EQ(plainLength, 5u);
}

TEST(CryptoShim, DigestsTheExamplesOfFIPS180) {
  const auto digestOf = [](std::string_view text) {
    const std::array digest = sha256(bytesOf(text));
    return Bytes(digest.begin(), digest.end());
  };
  EXPECT_EQ(digestOf("abc"), Fixture::fromHex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
  EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            Fixture::fromHex("248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"));
  EXPECT_EQ(digestOf({}), Fixture::fromHex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
}

TEST(CryptoShim, WipesMemory) {
  Bytes secret(1000, 0x5A);
  tw_wipe(secret.data(), secret.size());
  EXPECT_EQ(secret, Bytes(1000, 0));
}

TEST(CBCDecryptor, ContinuesItsChainFromSliceToSlice) {
  const Bytes plaintext(64, 0x41);
  const Bytes ciphertext = Fixture::aesCbcEncrypt(key, plaintext, Fixture::Padding::none);
  CBCDecryptor decryptor(key, Bytes(16, 0));
  Bytes result(64);
  decryptor.decrypt(ByteView(ciphertext).first(16), std::span(result).first(16));
  decryptor.decrypt(ByteView(ciphertext).subspan(16), std::span(result).subspan(16));
  EXPECT_EQ(result, plaintext);
}

TEST(CBCDecryptor, DecryptsInPlace) {
  const Bytes plaintext(48, 0x41);
  Bytes buffer = Fixture::aesCbcEncrypt(key, plaintext, Fixture::Padding::none);
  CBCDecryptor(key, Bytes(16, 0)).decrypt(buffer, buffer);
  EXPECT_EQ(buffer, plaintext);
}

TEST(CBCDecryptor, RefusesOtherKeyAndIVSizes) {
  EXPECT_THAT([] { CBCDecryptor(Bytes(24), iv); }, failsWith("AES-CBC used an unexpected key or IV size."));
  EXPECT_THAT([] { CBCDecryptor(key, Bytes(8)); }, failsWith("AES-CBC used an unexpected key or IV size."));
}

TEST(CBCDecryptor, RefusesPartsOfBlocksAndTooLittleRoom) {
  Bytes out(16);
  EXPECT_THAT([&] { CBCDecryptor(key, iv).decrypt(Bytes(15), out); }, failsWith("Could not decrypt a backup file."));
  EXPECT_THAT([&] { CBCDecryptor(key, iv).decrypt(Bytes(32), out); }, failsWith("Could not decrypt a backup file."));
}

}  // namespace
