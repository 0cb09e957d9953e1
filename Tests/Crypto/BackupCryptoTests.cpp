#include "TidewellCore/Crypto/BackupCrypto.h"

#include <gtest/gtest.h>

#include "Tests/Support/Failures.h"
#include "Tests/Support/Hex.h"
#include "Tests/Support/SeededRandom.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/TidewellError.h"

namespace {

using BackupCrypto::PBKDF2Hash;
using Fixture::failsWith;
using Fixture::fromHex;

std::string derived(std::string_view password, std::string_view salt, std::uint32_t rounds, std::size_t length,
                    PBKDF2Hash hash) {
  return Fixture::hex(BackupCrypto::pbkdf2(bytesOf(password), bytesOf(salt), rounds, length, hash));
}

// RFC 6070, section 2, but for the vector of 16,777,216 rounds.
TEST(BackupCrypto, DerivesKeysWithSHA1AsInRFC6070) {
  EXPECT_EQ(derived("password", "salt", 1, 20, PBKDF2Hash::sha1), "0c60c80f961f0e71f3a9b524af6012062fe037a6");
  EXPECT_EQ(derived("password", "salt", 2, 20, PBKDF2Hash::sha1), "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957");
  EXPECT_EQ(derived("password", "salt", 4096, 20, PBKDF2Hash::sha1), "4b007901b765489abead49d926f721d065a429c1");
  EXPECT_EQ(derived("passwordPASSWORDpassword", "saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096, 25, PBKDF2Hash::sha1),
            "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038");
  using std::string_view_literals::operator""sv;
  EXPECT_EQ(derived("pass\0word"sv, "sa\0lt"sv, 4096, 16, PBKDF2Hash::sha1), "56fa6aa75548099dcc37d7f03425e0c3");
}

// RFC 7914, section 11.
TEST(BackupCrypto, DerivesKeysWithSHA256AsInRFC7914) {
  EXPECT_EQ(derived("passwd", "salt", 1, 64, PBKDF2Hash::sha256),
            "55ac046e56e3089fec1691c22544b605f94185216dde0465e68b9d57c20dacbc"
            "49ca9cccf179b645991664b39d77ef317c71b845b1e30bd509112041d3a19783");
  EXPECT_EQ(derived("Password", "NaCl", 80000, 64, PBKDF2Hash::sha256),
            "4ddcd8f60b98be21830cee5ef22701f9641a4418d04c0414aeff08876b34ab56"
            "a1d425a1225833549adb841b51c9b3176a272bdebba1d078478f62b397f33c8d");
}

TEST(BackupCrypto, APasswordLongerThanABlockOfTheHashIsHashedFirst) {
  const Bytes password(65, 'p'), salt = Fixture::bytesOf("salt");
  for (const std::size_t length : {1UL, 20UL, 21UL, 64UL, 65UL}) {
    const Bytes some = Bytes(password.begin(), password.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(Fixture::hex(BackupCrypto::pbkdf2(some, salt, 3, 32, PBKDF2Hash::sha1)),
              Fixture::hex(Fixture::pbkdf2(Fixture::Digest::sha1, some, salt, 3, 32)))
        << length;
  }
}

TEST(BackupCrypto, ADerivationEndsSoonWhenItIsCancelled) {
  int asked = 0;
  const CancellationCheck isCancelled = [&] { return ++asked == 2; };
  const auto derive = [&](std::uint32_t rounds) {
    BackupCrypto::pbkdf2(bytesOf("password"), bytesOf("salt"), rounds, 32, PBKDF2Hash::sha256, isCancelled);
  };
  derive(100'000);
  EXPECT_EQ(asked, 0) << "a fraction of a second";
  EXPECT_THAT([&] { derive(100'000'000); }, failsWith(TidewellError::cancelled()));
}

TEST(BackupCrypto, DerivesNothingFromNothing) {
  const Bytes some{1}, none;
  const auto derive = [](const Bytes& password, const Bytes& salt, std::uint32_t rounds) {
    return [=] { BackupCrypto::pbkdf2(password, salt, rounds, 32, PBKDF2Hash::sha1); };
  };
  EXPECT_THAT(derive(none, some, 1), failsWith("Could not derive the backup key."));
  EXPECT_THAT(derive(some, none, 1), failsWith("Could not derive the backup key."));
  EXPECT_THAT(derive(some, some, 0), failsWith("Could not derive the backup key."));
}

// NIST SP 800-38A, appendices F.1.1 and F.1.5: ECB with keys of 128 and 256 bits, first block.
TEST(BackupCrypto, EncryptsABlockAsInSP800_38A) {
  const Bytes plain = fromHex("6bc1bee22e409f96e93d7e117393172a");
  const Bytes key128 = fromHex("2b7e151628aed2a6abf7158809cf4f3c");
  const Bytes key256 = fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
  const Bytes cipher128 = fromHex("3ad77bb40d7a3660a89ecaf32466ef97");
  const Bytes cipher256 = fromHex("f3eed1bdb5d2a03c064b5a7e3db181f8");
  EXPECT_EQ(Fixture::hex(BackupCrypto::aesECB(key128, plain, true)), Fixture::hex(cipher128));
  EXPECT_EQ(Fixture::hex(BackupCrypto::aesECB(key256, plain, true)), Fixture::hex(cipher256));
  EXPECT_EQ(Fixture::hex(BackupCrypto::aesECB(key128, cipher128, false)), Fixture::hex(plain));
  EXPECT_EQ(Fixture::hex(BackupCrypto::aesECB(key256, cipher256, false)), Fixture::hex(plain));
}

TEST(BackupCrypto, ABlockHas16BytesAndAKey16Or32) {
  EXPECT_THAT([] { BackupCrypto::aesECB(Bytes(32), Bytes(15), true); }, failsWith("AES block must be 16 bytes."));
  EXPECT_THAT([] { BackupCrypto::aesECB(Bytes(32), Bytes(32), true); }, failsWith("AES block must be 16 bytes."));
  EXPECT_THAT([] { BackupCrypto::aesECB(Bytes(24), Bytes(16), true); }, failsWith("AES operation failed."));
}

const Bytes sampleIV = fromHex("000102030405060708090a0b0c0d0e0f");
const Bytes samplePlain = fromHex(
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");

// NIST SP 800-38A, appendix F.2: CBC with a key of 128 bits (F.2.1, F.2.2) and of 256 bits (F.2.5, F.2.6).
TEST(BackupCrypto, ChainsBlocksAsInSP800_38A) {
  struct Vector {
    Bytes key, cipher;
  };
  for (const Vector& vector : {Vector{fromHex("2b7e151628aed2a6abf7158809cf4f3c"),
                                      fromHex("7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
                                              "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7")},
                               Vector{fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"),
                                      fromHex("f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
                                              "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b")}}) {
    EXPECT_EQ(Fixture::hex(BackupCrypto::aesCBC(vector.key, sampleIV, samplePlain, {.encrypt = true})),
              Fixture::hex(vector.cipher));
    EXPECT_EQ(Fixture::hex(BackupCrypto::aesCBC(vector.key, sampleIV, vector.cipher, {})), Fixture::hex(samplePlain));
    EXPECT_EQ(BackupCrypto::cbcDecryptRaw(vector.key, sampleIV, vector.cipher), samplePlain);
  }
}

TEST(BackupCrypto, AddsAndTakesPadding) {
  const Bytes key(32, 7);
  for (std::size_t size = 1; size <= 33; ++size) {
    const Bytes plain(size, 0x41);
    const SecretBytes cipher = BackupCrypto::aesCBC(key, sampleIV, plain, {.encrypt = true, .pkcs7 = true});
    EXPECT_EQ(cipher.size(), (size / 16 + 1) * 16);
    const SecretBytes back = BackupCrypto::aesCBC(key, sampleIV, cipher, {.pkcs7 = true});
    EXPECT_EQ(Bytes(back.begin(), back.end()), plain);
  }
}

TEST(BackupCrypto, ChainingRefusesOtherSizes) {
  for (const std::size_t size : std::vector<std::size_t>{0, 15, 24, 31, 33}) {
    EXPECT_THAT([=] { BackupCrypto::aesCBC(Bytes(size), sampleIV, Bytes(16), {}); },
                failsWith("AES-CBC used an unexpected key or IV size."))
        << size;
  }
  EXPECT_THAT([] { BackupCrypto::aesCBC(Bytes(32), Bytes(15), Bytes(16), {}); },
              failsWith("AES-CBC used an unexpected key or IV size."));
  EXPECT_THAT([] { BackupCrypto::aesCBC(Bytes(32), sampleIV, Bytes(17), {}); },
              failsWith("Could not decrypt a backup file."));
  EXPECT_THAT([] { BackupCrypto::aesCBC(Bytes(32), sampleIV, Bytes(), {}); },
              failsWith("Could not decrypt a backup file."));
  EXPECT_THAT([] { BackupCrypto::cbcDecryptRaw(Bytes(32), sampleIV, Bytes(17)); },
              failsWith("Could not decrypt a backup file."));
  EXPECT_THAT([] { BackupCrypto::cbcDecryptRaw(Bytes(32), sampleIV, Bytes()); },
              failsWith("Could not decrypt a backup file."));
}

TEST(BackupCrypto, TakesValidPaddingAway) {
  EXPECT_EQ(BackupCrypto::pkcs7Unpad(fromHex("4142 02 02")), fromHex("4142"));
  EXPECT_EQ(BackupCrypto::pkcs7Unpad(fromHex("01")), Bytes());
  EXPECT_EQ(BackupCrypto::pkcs7Unpad(Bytes(16, 16)), Bytes());
  EXPECT_EQ(BackupCrypto::pkcs7Unpad(Bytes(17, 16)), Bytes(1, 16));
}

TEST(BackupCrypto, KnowsInvalidPadding) {
  for (const char* hex : {"", "00", "4100", "41 11", "02", "03 03", "41 03 02 03", "01 02 02 03"}) {
    EXPECT_EQ(BackupCrypto::pkcs7Unpad(fromHex(hex)), std::nullopt) << hex;
    EXPECT_EQ(BackupCrypto::pkcs7UnpaddedSize(fromHex(hex)), std::nullopt) << hex;
  }
  EXPECT_EQ(BackupCrypto::pkcs7Unpad(Bytes(32, 17)), std::nullopt);
}

const Bytes kek = fromHex("000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F");

// RFC 3394, sections 4.3, 4.5 and 4.6: the vectors with a key-encryption key of 256 bits.
TEST(BackupCrypto, UnwrapsKeysAsInRFC3394) {
  const auto unwrapped = [](const char* wrapped) {
    return Fixture::hex(BackupCrypto::aesUnwrap(kek, fromHex(wrapped)));
  };
  EXPECT_EQ(unwrapped("64E8C3F9CE0F5BA2 63E9777905818A2A 93C8191E7D6E8AE7"), "00112233445566778899aabbccddeeff");
  EXPECT_EQ(unwrapped("A8F9BC1612C68B3F F6E6F4FBE30E71E4 769C8B80A32CB895 8CD5D17D6B254DA1"),
            "00112233445566778899aabbccddeeff0001020304050607");
  EXPECT_EQ(unwrapped("28C9F404C4B810F4 CBCCB35CFB87F826 3F5786E2D80ED326 CBC7F0E71A99F43B FB988B9B7A02DD21"),
            "00112233445566778899aabbccddeeff000102030405060708090a0b0c0d0e0f");
}

TEST(BackupCrypto, AWrappedClassKeyOf40BytesUnwrapsTo32) {
  const Bytes key = Fixture::SeededRandom(3).bytes(32);
  const Bytes wrapped = Fixture::aesWrap(kek, key);
  ASSERT_EQ(wrapped.size(), 40u);
  const SecretBytes unwrapped = BackupCrypto::aesUnwrap(kek, wrapped);
  EXPECT_EQ(Bytes(unwrapped.begin(), unwrapped.end()), key);
}

TEST(BackupCrypto, UnwrapsLongData) {
  // More than 255 steps, so that the step number fills two bytes of the register.
  const Bytes key = Fixture::SeededRandom(4).bytes(512);
  const SecretBytes unwrapped = BackupCrypto::aesUnwrap(kek, Fixture::aesWrap(kek, key));
  EXPECT_EQ(Bytes(unwrapped.begin(), unwrapped.end()), key);
}

TEST(BackupCrypto, AnyChangedBitOfAWrappedKeyIsNoticed) {
  const Bytes wrapped = Fixture::aesWrap(kek, Bytes(32, 9));
  for (std::size_t i = 0; i < wrapped.size(); ++i) {
    Bytes changed = wrapped;
    changed[i] ^= 1;
    EXPECT_THAT([&] { BackupCrypto::aesUnwrap(kek, changed); }, failsWith(TidewellError::wrongBackupPassword())) << i;
  }
}

TEST(BackupCrypto, UnwrappingWithAnotherKeySaysTheWrongPassword) {
  EXPECT_THAT([] { BackupCrypto::aesUnwrap(Bytes(32, 1), Fixture::aesWrap(kek, Bytes(32, 9))); },
              failsWith(TidewellError::wrongBackupPassword()));
}

TEST(BackupCrypto, UnwrappingRefusesOtherSizes) {
  for (const std::size_t size : std::vector<std::size_t>{0, 8, 16, 23, 25, 39}) {
    EXPECT_THAT([=] { BackupCrypto::aesUnwrap(kek, Bytes(size)); }, failsWith("A backup key has an unexpected size."))
        << size;
  }
  for (const std::size_t size : std::vector<std::size_t>{0, 16, 24, 31}) {
    EXPECT_THAT([=] { BackupCrypto::aesUnwrap(Bytes(size), Bytes(24)); },
                failsWith("A backup key has an unexpected size."))
        << size;
  }
}

class PayloadTest : public testing::Test {
 protected:
  const Bytes key_ = Fixture::SeededRandom(5).bytes(32);
  const Bytes plain_ = Fixture::SeededRandom(6).bytes(100);
  const Bytes cipher_ = Fixture::aesCbcEncrypt(key_, plain_);

  Bytes first(std::size_t count) const { return {plain_.begin(), plain_.begin() + static_cast<std::ptrdiff_t>(count)}; }
};

TEST_F(PayloadTest, IsCutToItsPadding) { EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, {}), plain_); }

TEST_F(PayloadTest, IsCutToItsSize) {
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, 33), first(33));
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, 0), Bytes());
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, 112).size(), 112u) << "padding included";
}

TEST_F(PayloadTest, AnImpossibleSizeGivesWayToThePadding) {
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, 113), plain_);
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, -1), plain_);
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, cipher_, INT64_MAX), plain_);
}

TEST_F(PayloadTest, APartOfABlockAtTheEndIsIgnored) {
  Bytes longer = cipher_;
  longer.insert(longer.end(), 5, 0xEE);
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, longer, {}), plain_);
}

TEST_F(PayloadTest, WithoutValidPaddingItStaysAsItIs) {
  const Bytes whole = first(96);
  EXPECT_EQ(BackupCrypto::decryptBackupPayload(key_, Fixture::aesCbcEncrypt(key_, whole, Fixture::Padding::none), {}),
            whole);
}

TEST_F(PayloadTest, WithoutAWholeBlockThereIsNothingToDecrypt) {
  EXPECT_THAT([&] { BackupCrypto::decryptBackupPayload(key_, Bytes(15), {}); },
              failsWith("Could not decrypt a backup file."));
  EXPECT_THAT([&] { BackupCrypto::decryptBackupPayload(key_, Bytes(), 0); },
              failsWith("Could not decrypt a backup file."));
}

}  // namespace
