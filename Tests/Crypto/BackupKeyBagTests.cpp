#include "TidewellCore/Crypto/BackupKeyBag.h"

#include <gmock/gmock.h>

#include <chrono>

#include "Tests/Support/Failures.h"
#include "Tests/Support/KeyBagBuilder.h"
#include "Tests/Support/TestCrypto.h"

namespace {

using Fixture::appendItem;
using Fixture::failsWith;

constexpr const char* truncated = "The backup key bag is truncated.";
constexpr const char* excessive =
    "The key bag of this encrypted backup asks for more work than an iPhone’s ever does, so it is damaged or was "
    "tampered with. Use another copy of the backup.";
constexpr const char* unusable = "This encrypted backup is missing a usable key bag.";

Fixture::KeyBag makeBag(const Fixture::KeyBagOptions& options) {
  Fixture::SeededRandom random(21);
  return Fixture::buildKeyBag(options, random);
}

// A bag's own items, before any class key.
Bytes header() {
  Bytes blob;
  appendItem(blob, "UUID", Bytes(16, 0xAA));
  appendItem(blob, "SALT", Bytes(20, 0x55));
  appendItem(blob, "ITER", 10U);
  return blob;
}

void appendClassKey(Bytes& blob, std::uint32_t number, std::uint32_t wrap, ByteView wrapped) {
  appendItem(blob, "UUID", Bytes(16, static_cast<std::uint8_t>(number)));
  appendItem(blob, "CLAS", number);
  appendItem(blob, "WRAP", wrap);
  appendItem(blob, "KTYP", 0U);
  appendItem(blob, "WPKY", wrapped);
}

Bytes withClassKey(Bytes blob) {
  appendClassKey(blob, 1, 2, Bytes(40, 1));
  return blob;
}

void expectUnlocks(const Fixture::KeyBagOptions& options) {
  const Fixture::KeyBag made = makeBag(options);
  BackupKeyBag bag = BackupKeyBag::parse(made.blob);
  bag.unlock(options.password);
  EXPECT_EQ(bag.unwrappedClassKeyCount(), options.passwordClasses.size());
  for (const auto& [number, key] : made.classKeys) {
    const SecretBytes& unwrapped = bag.key(number);
    EXPECT_EQ(Bytes(unwrapped.begin(), unwrapped.end()), key) << "class " << number;
  }
}

TEST(BackupKeyBag, ReadsEveryItem) {
  Bytes blob;
  appendItem(blob, "VERS", 5U);
  appendItem(blob, "TYPE", 1U);
  appendItem(blob, "UUID", Bytes(16, 0xAA));
  appendItem(blob, "HMCK", Bytes(40, 0xBB));
  appendItem(blob, "WRAP", 7U);
  appendItem(blob, "SALT", Bytes(20, 0x55));
  appendItem(blob, "ITER", 10000U);
  appendItem(blob, "DPWT", 1U);
  appendItem(blob, "DPIC", 10000000U);
  appendItem(blob, "DPSL", Bytes(20, 0x66));
  appendItem(blob, "UUID", Bytes(16, 0xC1));
  appendItem(blob, "CLAS", 3U);
  appendItem(blob, "WRAP", 2U);
  appendItem(blob, "KTYP", 4U);
  appendItem(blob, "WPKY", Bytes(40, 0x77));
  const BackupKeyBag bag = BackupKeyBag::parse(blob);
  EXPECT_EQ(
      bag,
      (BackupKeyBag{
          .type = 1,
          .uuid = Bytes(16, 0xAA),
          .wrap = 7,
          .salt = Bytes(20, 0x55),
          .iterations = 10000,
          .doubleSalt = Bytes(20, 0x66),
          .doubleIterations = 10000000,
          .classKeys = {
              {3, {.uuid = Bytes(16, 0xC1), .clas = 3, .wrap = 2, .keyType = 4, .wrappedKey = Bytes(40, 0x77)}}}}));
  EXPECT_EQ(bag.unwrappedClassKeyCount(), 0u) << "a bag that was just read is locked";
}

TEST(BackupKeyBag, MoreRoundsThanAPhoneAsksForAreRefused) {
  for (const char* tag : {"ITER", "DPIC"}) {
    Bytes blob = header();
    appendItem(blob, tag, 100'000'000U);
    EXPECT_NO_THROW(BackupKeyBag::parse(withClassKey(blob))) << tag;
    appendItem(blob, tag, 100'000'001U);
    EXPECT_THAT([&] { BackupKeyBag::parse(withClassKey(blob)); }, failsWith(excessive)) << tag;
  }
}

TEST(BackupKeyBag, MoreItemsThanAPhoneWritesAreRefused) {
  Bytes blob = withClassKey(header());
  constexpr std::size_t itemsSoFar = 8;
  for (std::size_t i = itemsSoFar; i < 4096; ++i) appendItem(blob, "XXXX", Bytes{});
  EXPECT_NO_THROW(BackupKeyBag::parse(blob));
  appendItem(blob, "XXXX", Bytes{});
  EXPECT_THAT([&] { BackupKeyBag::parse(blob); }, failsWith(excessive));
}

TEST(BackupKeyBag, AnOldBagHasNoSecondDerivation) {
  const BackupKeyBag bag = BackupKeyBag::parse(withClassKey(header()));
  EXPECT_EQ(bag.doubleSalt, std::nullopt);
  EXPECT_EQ(bag.doubleIterations, std::nullopt);
}

TEST(BackupKeyBag, AnEightByteNumberIsReadFromItsLastFourBytes) {
  Bytes blob;
  appendItem(blob, "UUID", Bytes(16, 0xAA));
  appendItem(blob, "SALT", Bytes(20, 0x55));
  Fixture::appendWideItem(blob, "ITER", 0xFFFFFFFF00002710);
  EXPECT_EQ(BackupKeyBag::parse(withClassKey(blob)).iterations, 10000);
}

TEST(BackupKeyBag, ANumberOfAnyOtherLengthIsZero) {
  for (const std::size_t length : std::vector<std::size_t>{0, 1, 2, 3, 5, 7, 9, 16}) {
    Bytes blob = header();
    appendItem(blob, "TYPE", Bytes(length, 1));
    EXPECT_EQ(BackupKeyBag::parse(withClassKey(blob)).type, 0u) << length;
  }
}

TEST(BackupKeyBag, OfTwoKeysOfOneClassTheLaterWins) {
  Bytes blob = header();
  appendClassKey(blob, 3, 1, Bytes(40, 1));
  appendClassKey(blob, 3, 2, Bytes(40, 2));
  const BackupKeyBag bag = BackupKeyBag::parse(blob);
  ASSERT_EQ(bag.classKeys.size(), 1u);
  EXPECT_EQ(bag.classKeys.at(3).wrap, 2u);
  EXPECT_EQ(bag.classKeys.at(3).wrappedKey, Bytes(40, 2));
}

TEST(BackupKeyBag, UnknownItemsAreSkipped) {
  Bytes blob = header();
  appendItem(blob, "XXXX", Bytes(1000, 0xFF));
  EXPECT_EQ(BackupKeyBag::parse(withClassKey(blob)).classKeys.size(), 1u);
}

TEST(BackupKeyBag, ItemsOfAClassKeyCountOnlyInsideOne) {
  Bytes blob;
  appendItem(blob, "CLAS", 9U);
  Fixture::append(blob, header());
  EXPECT_EQ(BackupKeyBag::parse(withClassKey(blob)).classKeys.begin()->first, 1u);
}

TEST(BackupKeyBag, APartOfAnItemHeaderAtTheEndIsIgnored) {
  for (std::size_t extra = 1; extra < 8; ++extra) {
    Bytes blob = withClassKey(header());
    blob.insert(blob.end(), extra, 'X');
    EXPECT_EQ(BackupKeyBag::parse(blob), BackupKeyBag::parse(withClassKey(header()))) << extra;
  }
}

TEST(BackupKeyBag, AnItemThatRunsPastTheEndIsTruncated) {
  Bytes blob = withClassKey(header());
  blob.pop_back();
  EXPECT_THAT([&] { BackupKeyBag::parse(blob); }, failsWith(truncated));
  Bytes greatest = Fixture::bytesOf("SALT\xFF\xFF\xFF\xFF");
  EXPECT_THAT([&] { BackupKeyBag::parse(greatest); }, failsWith(truncated));
}

TEST(BackupKeyBag, EveryCutOfABagIsRefusedOrReadable) {
  const Bytes whole = makeBag({.password = "x"}).blob;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    try {
      EXPECT_FALSE(BackupKeyBag::parse(ByteView(whole).first(size)).classKeys.empty());
    } catch (const TidewellError& error) {
      EXPECT_TRUE(error == TidewellError::ioFailure(truncated) || error == TidewellError::ioFailure(unusable));
    }
  }
}

TEST(BackupKeyBag, WithoutSaltRoundsOrKeysItIsUnusable) {
  Bytes noSalt;
  appendItem(noSalt, "UUID", Bytes(16));
  appendItem(noSalt, "ITER", 10U);
  Bytes noRounds;
  appendItem(noRounds, "UUID", Bytes(16));
  appendItem(noRounds, "SALT", Bytes(20));
  Bytes zeroRounds = noRounds;
  appendItem(zeroRounds, "ITER", 0U);
  Bytes emptySalt = noSalt;
  appendItem(emptySalt, "SALT", Bytes());
  for (const Bytes& blob : {withClassKey(noSalt), withClassKey(noRounds), withClassKey(zeroRounds),
                            withClassKey(emptySalt), header(), Bytes()}) {
    EXPECT_THAT([&] { BackupKeyBag::parse(blob); }, failsWith(unusable));
  }
}

TEST(BackupKeyBag, UnlocksWithBothDerivations) { expectUnlocks({.password = "correct horse"}); }

TEST(BackupKeyBag, UnlocksAnOldBagWithASingleDerivation) {
  expectUnlocks({.password = "correct horse", .doubleIterations = std::nullopt});
}

TEST(BackupKeyBag, NoRoundsOrNoSaltMeansASingleDerivation) {
  expectUnlocks({.password = "correct horse", .doubleIterations = 0});
  expectUnlocks({.password = "correct horse", .emptyDoubleSalt = true});
}

TEST(BackupKeyBag, UnlocksWithAWideCount) { expectUnlocks({.password = "correct horse", .wideIterations = true}); }

TEST(BackupKeyBag, APasswordIsItsUTF8Bytes) { expectUnlocks({.password = "Señor 🎉 пароль"}); }

TEST(BackupKeyBag, TheRoundsOfRecentBackupsUnlockToo) {
  expectUnlocks({.password = "correct horse", .iterations = 10'000, .doubleIterations = 20'000});
}

TEST(BackupKeyBag, AWrongPasswordIsSaidToBeWrong) {
  BackupKeyBag bag = BackupKeyBag::parse(makeBag({.password = "correct horse"}).blob);
  for (const char* password : {"Correct horse", "correct horse ", "x"}) {
    EXPECT_THAT([&] { bag.unlock(password); }, failsWith(TidewellError::wrongBackupPassword())) << password;
    EXPECT_EQ(bag.unwrappedClassKeyCount(), 0u);
  }
}

TEST(BackupKeyBag, AnEmptyPasswordDerivesNoKey) {
  BackupKeyBag bag = BackupKeyBag::parse(makeBag({.password = "correct horse", .doubleIterations = std::nullopt}).blob);
  EXPECT_THAT([&] { bag.unlock(""); }, failsWith("Could not derive the backup key."));
}

TEST(BackupKeyBag, KeysOfTheDeviceStayLocked) {
  BackupKeyBag bag = BackupKeyBag::parse(makeBag({.password = "x", .passwordClasses = {3}, .deviceClasses = {9}}).blob);
  bag.unlock("x");
  EXPECT_EQ(bag.unwrappedClassKeyCount(), 1u);
  EXPECT_EQ(bag.classKeys.at(9).unwrappedKey, std::nullopt);
}

TEST(BackupKeyBag, ABagOfDeviceKeysAloneOpensWithNoPassword) {
  BackupKeyBag bag =
      BackupKeyBag::parse(makeBag({.password = "x", .passwordClasses = {}, .deviceClasses = {9, 10}}).blob);
  EXPECT_THAT([&] { bag.unlock("x"); }, failsWith(TidewellError::wrongBackupPassword()));
}

TEST(BackupKeyBag, TheFlagCountsAmongOthers) {
  const Fixture::KeyBag made = makeBag({.password = "x", .passwordClasses = {3}, .deviceClasses = {}});
  BackupKeyBag bag = BackupKeyBag::parse(made.blob);
  bag.classKeys.at(3).wrap = 3;  // with the device's key and the password's
  bag.unlock("x");
  EXPECT_EQ(bag.unwrappedClassKeyCount(), 1u);
}

TEST(BackupKeyBag, CancellationIsAskedBeforeBetweenAndAfterTheDerivations) {
  const Bytes blob = makeBag({.password = "x"}).blob;
  for (int stage = 1; stage <= 3; ++stage) {
    BackupKeyBag bag = BackupKeyBag::parse(blob);
    int asked = 0;
    EXPECT_THAT([&] { bag.unlock("x", [&] { return ++asked == stage; }); }, failsWith(TidewellError::cancelled()));
    EXPECT_EQ(asked, stage);
    EXPECT_EQ(bag.unwrappedClassKeyCount(), 0u);
  }
}

TEST(BackupKeyBag, OneDerivationAsksTwice) {
  BackupKeyBag bag = BackupKeyBag::parse(makeBag({.password = "x", .doubleIterations = std::nullopt}).blob);
  int asked = 0;
  bag.unlock("x", [&] { return ++asked < 0; });
  EXPECT_EQ(asked, 2);
}

TEST(BackupKeyBag, TheKeyOfAPasswordOpensItsBagAgain) {
  for (const std::optional<std::uint32_t> rounds : {std::optional(100U), std::optional<std::uint32_t>()}) {
    const Fixture::KeyBag made = makeBag({.password = "x", .doubleIterations = rounds});
    BackupKeyBag byPassword = BackupKeyBag::parse(made.blob);
    const PasswordKey key = byPassword.unlock("x");
    EXPECT_EQ(Bytes(key.key.begin(), key.key.end()), made.passwordKey);
    BackupKeyBag byKey = BackupKeyBag::parse(made.blob);
    EXPECT_TRUE(byKey.unlock(key));
    EXPECT_EQ(byKey, byPassword);
  }
}

TEST(BackupKeyBag, AKeyOpensNoBagOfAnotherDerivation) {
  const Fixture::KeyBag made = makeBag({.password = "x"});
  const PasswordKey key = BackupKeyBag::parse(made.blob).unlock("x");
  const BackupKeyBag locked = BackupKeyBag::parse(made.blob);
  std::vector<BackupKeyBag> others(5, locked);
  others[0].salt.back() ^= 1;
  ++others[1].iterations;
  others[2].doubleSalt->back() ^= 1;
  ++*others[3].doubleIterations;
  others[4].doubleIterations.reset();
  for (const BackupKeyBag& other : others) {
    BackupKeyBag bag = other;
    EXPECT_FALSE(bag.unlock(key));
    EXPECT_EQ(bag, other) << "nothing of it is unlocked";
  }
}

TEST(BackupKeyBag, AKeyThatDoesNotUnwrapAllLeavesTheBagLocked) {
  const Fixture::KeyBag made = makeBag({.password = "x", .passwordClasses = {1, 2, 3}});
  const PasswordKey key = BackupKeyBag::parse(made.blob).unlock("x");
  BackupKeyBag locked = BackupKeyBag::parse(made.blob);
  PasswordKey wrong = key;
  wrong.key.back() ^= 1;
  EXPECT_FALSE(locked.unlock(wrong));
  locked.classKeys.at(3).wrappedKey.back() ^= 1;
  EXPECT_FALSE(locked.unlock(key));
  EXPECT_EQ(locked.unwrappedClassKeyCount(), 0U);
  BackupKeyBag ofTheDevice = BackupKeyBag::parse(made.blob);
  for (auto& [number, classKey] : ofTheDevice.classKeys) classKey.wrap = 1;
  EXPECT_FALSE(ofTheDevice.unlock(key));
}

// 100,000,000 rounds take half a minute.
TEST(BackupKeyBag, AKeyIsNotDerivedAgain) {
  const Fixture::KeyBag made = makeBag({.password = "x"});
  PasswordKey key = BackupKeyBag::parse(made.blob).unlock("x");
  BackupKeyBag slow = BackupKeyBag::parse(made.blob);
  slow.doubleIterations = key.derivation.doubleIterations = 100'000'000;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(slow.unlock(key));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(BackupKeyBag, ReadsTheClassOfAPersistentKeyAsLittleEndian) {
  EXPECT_EQ(BackupKeyBag::protectionClass(Bytes{3, 0, 0, 0}), 3u);
  EXPECT_EQ(BackupKeyBag::protectionClass(Bytes{4, 3, 2, 1, 9, 9}), 0x01020304u);
  EXPECT_EQ(BackupKeyBag::protectionClass(Bytes{3, 0, 0}), std::nullopt);
  EXPECT_EQ(BackupKeyBag::protectionClass(Bytes{}), std::nullopt);
}

class UnlockedKeyBagTest : public testing::Test {
 protected:
  void SetUp() override { bag_.unlock("x"); }

  const Fixture::KeyBag made_ = makeBag({.password = "x"});
  BackupKeyBag bag_ = BackupKeyBag::parse(made_.blob);
};

TEST_F(UnlockedKeyBagTest, UnwrapsAFilesKey) {
  const Bytes fileKey(32, 0x42);
  const SecretBytes unwrapped = bag_.unwrapPersistentKey(made_.persistentKey(4, fileKey));
  EXPECT_EQ(Bytes(unwrapped.begin(), unwrapped.end()), fileKey);
}

TEST_F(UnlockedKeyBagTest, NamesAMissingOrLockedClass) {
  EXPECT_THAT([&] { bag_.key(12); }, failsWith("This backup is missing protection class 12."));
  EXPECT_THAT([&] { bag_.key(9); }, failsWith("This backup is missing protection class 9."));
  EXPECT_THAT([&] { bag_.unwrapPersistentKey(made_.persistentKey(9, Bytes(32))); },
              failsWith("This backup is missing protection class 9."));
  EXPECT_THAT([&] { bag_.unwrapPersistentKey(Bytes(8, 0xFF)); },
              failsWith("This backup is missing protection class 4294967295."));
}

TEST_F(UnlockedKeyBagTest, APersistentKeyNeedsEightBytes) {
  for (std::size_t size = 0; size < 8; ++size) {
    EXPECT_THAT([&] { bag_.unwrapPersistentKey(Bytes(size, 3)); },
                failsWith("A backup file is missing its encryption key."));
  }
}

TEST_F(UnlockedKeyBagTest, ADamagedFileKeyIsNoticed) {
  Bytes key = made_.persistentKey(4, Bytes(32, 0x42));
  key.back() ^= 1;
  EXPECT_THAT([&] { bag_.unwrapPersistentKey(key); }, failsWith(TidewellError::wrongBackupPassword()));
  EXPECT_THAT(
      [&] {
        bag_.unwrapPersistentKey(Bytes{4, 0, 0, 0, 1, 2, 3, 4});
      },
      failsWith("A backup key has an unexpected size."));
}

}  // namespace
