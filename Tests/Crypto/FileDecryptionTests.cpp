#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "Tests/Support/Failures.h"
#include "Tests/Support/RefusedCall.h"
#include "Tests/Support/SeededRandom.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/Crypto/BackupCrypto.h"

namespace {

using BackupCrypto::chunkSize;
using Fixture::Padding;

// Files are encrypted by the fixtures' own code, straight from the crypto library.
class FileDecryptionTest : public testing::Test {
 protected:
  void store(ByteView bytes) const { Fixture::writeFile(source_, bytes); }
  void storeEncrypted(ByteView plain, Padding padding = Padding::pkcs7) const {
    store(Fixture::aesCbcEncrypt(key_, plain, padding));
  }
  static BackupCrypto::DecryptedFile decryptFile(const std::filesystem::path& source,
                                                 const std::filesystem::path& target, const Bytes& key,
                                                 std::optional<std::int64_t> expectedSize,
                                                 const CancellationCheck& isCancelled = {}) {
    FileDescriptor output = FileDescriptor::create(target);
    const auto decrypted = BackupCrypto::decryptFile(source, output, key, expectedSize, isCancelled);
    output.close();
    return decrypted;
  }
  Bytes decrypted(std::optional<std::int64_t> expectedSize = {}) const {
    const auto written = decryptFile(source_, target_, key_, expectedSize);
    const Bytes content = Fixture::readFile(target_);
    EXPECT_EQ(written.byteCount, static_cast<std::int64_t>(content.size()));
    return content;
  }
  bool isBorneOut(std::optional<std::int64_t> expectedSize = {}) const {
    return decryptFile(source_, target_, key_, expectedSize).isBorneOut;
  }
  Bytes random(std::size_t size) const { return Fixture::SeededRandom(size).bytes(size); }
  static Bytes first(const Bytes& bytes, std::size_t count) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
  }

  const Fixture::TemporaryDirectory folder_;
  const std::filesystem::path source_ = folder_ / "stored";
  const std::filesystem::path target_ = folder_ / "plain";
  const Bytes key_ = Fixture::SeededRandom(11).bytes(32);
};

TEST_F(FileDecryptionTest, ThePaddingBearsALengthOut) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{16}, std::size_t{20}, chunkSize, chunkSize + 5}) {
    storeEncrypted(random(size));
    EXPECT_TRUE(isBorneOut()) << size;
    EXPECT_TRUE(isBorneOut(static_cast<std::int64_t>(size))) << size;
    EXPECT_FALSE(isBorneOut(static_cast<std::int64_t>(size) - 1)) << size;
  }
  storeEncrypted(random(32), Padding::none);
  EXPECT_TRUE(isBorneOut(32));
  EXPECT_FALSE(isBorneOut(31));
  store(Bytes(32));
  EXPECT_FALSE(isBorneOut(20)) << "what a failing disk leaves";
}

TEST_F(FileDecryptionTest, DecryptsFilesOfEverySizeAroundTheBordersOfAChunk) {
  for (const std::size_t size :
       {std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{17}, chunkSize - 17, chunkSize - 16,
        chunkSize - 1, chunkSize, chunkSize + 1, 2 * chunkSize - 16, 2 * chunkSize, 3 * chunkSize + 5}) {
    const Bytes plain = random(size);
    storeEncrypted(plain);
    EXPECT_TRUE(decrypted() == plain) << size << " bytes by their padding";
    EXPECT_TRUE(decrypted(static_cast<std::int64_t>(size)) == plain) << size << " bytes by their recorded size";
  }
}

TEST_F(FileDecryptionTest, ASourceOfWholeChunksDecryptsAsInOnePiece) {
  const Bytes plain = random(2 * chunkSize - 1);
  const Bytes cipher = Fixture::aesCbcEncrypt(key_, plain);
  ASSERT_EQ(cipher.size(), 2 * chunkSize);
  store(cipher);
  EXPECT_TRUE(decrypted() == BackupCrypto::decryptBackupPayload(key_, cipher, {}));
}

TEST_F(FileDecryptionTest, ARecordedSizeCutsThePlaintextToItsLength) {
  const Bytes plain = random(100);
  storeEncrypted(plain);
  for (const std::size_t size : std::vector<std::size_t>{0, 1, 16, 84, 96, 97, 100}) {
    EXPECT_EQ(decrypted(static_cast<std::int64_t>(size)), first(plain, size)) << size;
  }
}

TEST_F(FileDecryptionTest, ARecordedSizeCutsAcrossChunks) {
  const Bytes plain = random(2 * chunkSize);
  storeEncrypted(plain);
  for (const std::size_t size : {chunkSize - 1, chunkSize, chunkSize + 1}) {
    EXPECT_TRUE(decrypted(static_cast<std::int64_t>(size)) == first(plain, size)) << size;
  }
}

TEST_F(FileDecryptionTest, WithARecordedSizeNoPaddingIsTakenAway) {
  const Bytes plain(32, 0x01);  // ends in what looks like padding
  storeEncrypted(plain, Padding::none);
  EXPECT_EQ(decrypted(32), plain);
  EXPECT_EQ(decrypted(1000), plain) << "a size beyond the end reads to the end";
  EXPECT_EQ(decrypted(), first(plain, 31)) << "without a size it counts as padding";
}

TEST_F(FileDecryptionTest, AFinalBlockOfPaddingAloneIsLost) {
  storeEncrypted(Bytes(32, 0x10), Padding::none);
  EXPECT_EQ(decrypted(), Bytes(16, 0x10));
}

TEST_F(FileDecryptionTest, AFinalBlockWithInvalidPaddingStaysAsItIs) {
  const Bytes plain(48, 0x41);
  storeEncrypted(plain, Padding::none);
  EXPECT_EQ(decrypted(), plain);
}

TEST_F(FileDecryptionTest, APartOfABlockAtTheEndIsIgnored) {
  const Bytes plain = random(100);
  Bytes cipher = Fixture::aesCbcEncrypt(key_, plain);
  cipher.insert(cipher.end(), 7, 0xEE);
  store(cipher);
  EXPECT_EQ(decrypted(), plain);
}

TEST_F(FileDecryptionTest, APartOfABlockBehindAWholeChunkIsIgnored) {
  const Bytes plain = random(chunkSize - 1);
  Bytes cipher = Fixture::aesCbcEncrypt(key_, plain);
  cipher.push_back(0xEE);
  store(cipher);
  EXPECT_TRUE(decrypted() == plain);
}

TEST_F(FileDecryptionTest, AFileWithoutAWholeBlockGivesAnEmptyFile) {
  store(Bytes());
  EXPECT_EQ(decrypted(), Bytes());
  store(Bytes(15));
  EXPECT_EQ(decrypted(), Bytes());
  EXPECT_EQ(decrypted(10), Bytes());
}

TEST_F(FileDecryptionTest, ANegativeSizeWritesNothing) {
  storeEncrypted(random(50));
  EXPECT_EQ(decrypted(-1), Bytes());
}

TEST_F(FileDecryptionTest, ReplacesAnEarlierFile) {
  Fixture::writeFile(target_, std::string(1000, 'x'));
  storeEncrypted(Bytes(3, 0x41));
  EXPECT_EQ(decrypted(), Bytes(3, 0x41));
}

TEST_F(FileDecryptionTest, ReplacesALinkAndLeavesItsTargetAlone) {
  Fixture::writeFile(folder_ / "mine", "mine");
  std::filesystem::create_symlink("mine", target_);
  storeEncrypted(Bytes(3, 0x41));
  decrypted();
  EXPECT_EQ(textOf(Fixture::readFile(folder_ / "mine")), "mine");
}

TEST_F(FileDecryptionTest, LeavesTheStoredFileAlone) {
  storeEncrypted(random(50));
  const auto before = Fixture::treeSnapshot(folder_.path()).at("stored");
  decrypted();
  EXPECT_EQ(Fixture::treeSnapshot(folder_.path()).at("stored"), before);
}

TEST_F(FileDecryptionTest, CancellingStopsBetweenChunks) {
  storeEncrypted(random(3 * chunkSize));
  int asked = 0;
  EXPECT_THAT([&] { decryptFile(source_, target_, key_, {}, [&] { return ++asked == 2; }); },
              Fixture::failsWith(TidewellError::cancelled()));
  EXPECT_EQ(asked, 2);
  EXPECT_LT(Fixture::readFile(target_).size(), 2 * chunkSize);
}

TEST_F(FileDecryptionTest, RefusesKeysOfOtherSizes) {
  storeEncrypted(random(50));
  EXPECT_THAT([&] { decryptFile(source_, target_, Bytes(24), {}); },
              Fixture::failsWith("AES-CBC used an unexpected key or IV size."));
}

TEST_F(FileDecryptionTest, PassesOnWhatTheFileSystemSays) {
  EXPECT_THROW(decryptFile(source_, target_, key_, {}), std::filesystem::filesystem_error);
  EXPECT_EQ(Fixture::readFile(target_), Bytes()) << "nothing was begun";
}

TEST_F(FileDecryptionTest, AFileTooLargeForTheDriveFailsBeforeItIsWritten) {
  storeEncrypted(random(5 * chunkSize));
  const auto decrypt = [&](std::optional<std::int64_t> expectedSize) {
    Fixture::refuseCall(SYS_fallocate, EFBIG);  // as the kernel does where the file system has a limit
    try {
      decryptFile(source_, target_, key_, expectedSize);
      ::_exit(0);
    } catch (const std::filesystem::filesystem_error& error) {
      ::_exit(error.code().value());
    }
  };
  for (const auto size : {std::optional<std::int64_t>(), std::optional<std::int64_t>(5 * chunkSize)}) {
    EXPECT_EXIT(decrypt(size), testing::ExitedWithCode(EFBIG), "");
    EXPECT_EQ(Fixture::readFile(target_).size(), 0U);
  }
}

TEST_F(FileDecryptionTest, RefusesLinksAndFIFOsWithoutBlocking) {
  storeEncrypted(random(50));
  std::filesystem::create_symlink("stored", folder_ / "link");
  EXPECT_THROW(decryptFile(folder_ / "link", target_, key_, {}), std::filesystem::filesystem_error);
  ASSERT_EQ(mkfifo((folder_ / "fifo").c_str(), 0600), 0);
  EXPECT_THROW(decryptFile(folder_ / "fifo", target_, key_, {}), std::filesystem::filesystem_error);
}

TEST_F(FileDecryptionTest, TheLastBlockTellsThePlaintextsLength) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{100}, chunkSize, chunkSize + 1}) {
    storeEncrypted(random(size));
    EXPECT_EQ(BackupCrypto::paddedFileSize(source_, key_), static_cast<std::int64_t>(size));
  }
}

TEST_F(FileDecryptionTest, AFileCutShortTellsNoLength) {
  storeEncrypted(Bytes(64, 0x41), Padding::none);
  EXPECT_EQ(BackupCrypto::paddedFileSize(source_, key_), std::nullopt) << "no valid padding";
  storeEncrypted(Bytes(16, 0x41), Padding::none);
  EXPECT_EQ(BackupCrypto::paddedFileSize(source_, key_), std::nullopt) << "a single block without";
  for (const std::size_t size : std::vector<std::size_t>{0, 1, 15, 17, 100}) {
    store(Bytes(size));
    EXPECT_EQ(BackupCrypto::paddedFileSize(source_, key_), std::nullopt) << size << " bytes are no whole blocks";
  }
}

TEST_F(FileDecryptionTest, TheEndOfAWholeFileIsThatOfItsLastTwoBlocks) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{31},
                                 std::size_t{32}, std::size_t{100}}) {
    const Bytes plain = random(size);
    storeEncrypted(plain);
    const auto end = BackupCrypto::wholeEnd(source_, key_, static_cast<std::int64_t>(size));
    ASSERT_TRUE(end) << size;
    EXPECT_GE(end->size(), std::min<std::size_t>(size, 16)) << "there is something to compare";
    EXPECT_TRUE(std::equal(end->rbegin(), end->rend(), plain.rbegin())) << size;
  }
  storeEncrypted(Bytes(64, 0x41), Padding::none);
  EXPECT_EQ(BackupCrypto::wholeEnd(source_, key_, 64), Bytes(32, 0x41)) << "without padding, but all of it";
}

TEST_F(FileDecryptionTest, AnEndThatIsNoWholeFilesIsNone) {
  storeEncrypted(random(100));
  EXPECT_EQ(BackupCrypto::wholeEnd(source_, key_, 99), std::nullopt) << "its padding says otherwise";
  EXPECT_EQ(BackupCrypto::wholeEnd(source_, Bytes(32), 100), std::nullopt) << "another key's";
  Bytes stored = Fixture::readFile(source_);
  stored.back() ^= 1;
  store(stored);
  EXPECT_EQ(BackupCrypto::wholeEnd(source_, key_, 100), std::nullopt) << "damaged";
  for (const std::size_t size : {std::size_t{0}, std::size_t{17}}) {
    store(Bytes(size));
    EXPECT_EQ(BackupCrypto::wholeEnd(source_, key_, 1), std::nullopt) << size << " bytes are no whole blocks";
  }
}

}  // namespace
