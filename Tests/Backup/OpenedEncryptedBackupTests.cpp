#include "TidewellCore/Backup/OpenedBackup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "Tests/Backup/OpenedBackupScene.h"
#include "Tests/Support/TestCrypto.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(OpenedBackupTest, AnEncryptedBackupOpensWithItsPassword) {
  const WrittenBackup& backup = write(encryptedContents());
  {
    const OpenedBackup opened = open(password);
    EXPECT_TRUE(opened.unlocker());
    EXPECT_TRUE(opened.usesTemporaryManifest());
    EXPECT_THAT(temporary_.names(), ElementsAre(StartsWith("Tidewell-manifest-")));
    const fs::path working = temporary_.path() / temporary_.names().at(0);
    EXPECT_EQ(opened.manifestDatabaseURL(), working / "Manifest.db");
    EXPECT_EQ(fs::status(working).permissions(), fs::perms(0700));
    EXPECT_THAT(index(opened).media, SizeIs(1));
    ASSERT_THAT(reports_, SizeIs(1));
    EXPECT_EQ(opened.unlockReport(), reports_[0]);
  }
  EXPECT_THAT(temporary_.names(), IsEmpty()) << "the folder goes with its owner";
  const BackupUnlockReport expected{
      .keyBagParsed = true,
      .classKeyCount = 11,
      .classKeysUnwrapped = 8,
      .manifestKeyClass = 3,
      .manifestCipherByteCount = static_cast<std::int64_t>(fs::file_size(device_ / "Manifest.db")),
      .manifestDecryptedByteCount = static_cast<std::int64_t>(backup.manifestDatabase.size()),
      .sqliteHeaderOK = true,
      .sqliteJournal = "wal",
      .openedAsWritableCopy = true};
  EXPECT_EQ(reports_[0], expected) << "the journal is that before the conversion";
}

TEST_F(OpenedBackupTest, TheKeyOfTheIndexIsGoneWhenTheIndexIsOpen) {
  write(encryptedContents());
  EXPECT_FALSE(open(password).unlocker()->manifestKey);
}

TEST_F(OpenedBackupTest, TheDecryptedIndexNoLongerExpectsAWriteAheadLog) {
  write(encryptedContents());
  const OpenedBackup opened = open(password);
  EXPECT_EQ(readFile(opened.manifestDatabaseURL()).at(18), 1);
}

TEST_F(OpenedBackupTest, SaysThatItIsUnlocking) {
  write(encryptedContents());
  open(password);
  ASSERT_THAT(progress_, SizeIs(1));
  EXPECT_EQ(progress_[0].phase, ExportProgress::Phase::unlocking);
  EXPECT_EQ(progress_[0].currentFileName, "Unlocking backup…");
}

TEST_F(OpenedBackupTest, AMovedOwnerKeepsItsWorkingFolder) {
  write(encryptedContents());
  std::optional<OpenedBackup> opened = open(password);
  const OpenedBackup moved = std::move(*opened);
  opened.reset();
  EXPECT_THAT(index(moved).media, SizeIs(1));
}

TEST_F(OpenedBackupTest, WithoutAPasswordNothingIsTried) {
  write(encryptedContents());
  EXPECT_THAT([&] { open(std::nullopt); }, failsWith(TidewellError::needsBackupPassword()));
  EXPECT_THAT([&] { open(""); }, failsWith(TidewellError::needsBackupPassword()));
  EXPECT_THAT(reports_, IsEmpty());
  EXPECT_THAT(progress_, IsEmpty()) << "no key was derived";
}

TEST_F(OpenedBackupTest, AWrongPasswordIsReportedWithTheStagesBeforeIt) {
  write(encryptedContents());
  expectFailure(TidewellError::wrongBackupPassword(), "Correct horse");
  EXPECT_EQ(reports_[0], (BackupUnlockReport{.keyBagParsed = true, .classKeyCount = 11}));
  EXPECT_EQ(reports_[0].diagnosticLines()[1], "unlock: class keys 0/11 unwrapped");
}

TEST_F(OpenedBackupTest, AMissingKeyBagIsReported) {
  BackupContents contents = encryptedContents();
  contents.encryption->withoutKeyBag = true;
  write(contents);
  expectFailure(TidewellError::ioFailure("This encrypted backup is missing BackupKeyBag."));
  EXPECT_EQ(reports_[0], BackupUnlockReport{});
}

TEST_F(OpenedBackupTest, AKeyBagCutBeforeItsFirstClassKeyIsReported) {
  write(encryptedContents());
  const Bytes whole = backup_.keyBag->blob;
  const Bytes tag = bytesOf("WPKY");
  const auto firstKey = std::search(whole.begin(), whole.end(), tag.begin(), tag.end());
  for (auto end = whole.begin(); end < firstKey + 8; end += 7) {
    setKey(backup_.manifest, "BackupKeyBag", Bytes(whole.begin(), end));
    rewriteManifest();
    reports_.clear();
    EXPECT_THROW(open(password), TidewellError) << end - whole.begin();
    EXPECT_THAT(reports_, SizeIs(1)) << end - whole.begin();
    EXPECT_THAT(temporary_.names(), IsEmpty()) << end - whole.begin();
  }
}

TEST_F(OpenedBackupTest, ADamagedClassKeyCountsAsAWrongPassword) {
  write(encryptedContents());
  Bytes bag = backup_.keyBag->blob;
  const Bytes tag = bytesOf("WPKY");
  *(std::search(bag.begin(), bag.end(), tag.begin(), tag.end()) + 20) ^= 1;
  setKey(backup_.manifest, "BackupKeyBag", bag);
  rewriteManifest();
  expectFailure(TidewellError::wrongBackupPassword());
}

TEST_F(OpenedBackupTest, AnAbsentManifestKeyIsReported) {
  BackupContents contents = encryptedContents();
  contents.encryption->withoutManifestKey = true;
  write(contents);
  expectFailure(TidewellError::manifestDecryptFailed("ManifestKey is missing after the key bag unlocked."));
  EXPECT_EQ(reports_[0], (BackupUnlockReport{.keyBagParsed = true, .classKeyCount = 11, .classKeysUnwrapped = 8}));
  EXPECT_EQ(reports_[0].diagnosticLines()[2], "unlock: ManifestKey class missing");
}

TEST_F(OpenedBackupTest, AManifestKeyOfALockedClassIsReported) {
  BackupContents contents = encryptedContents();
  contents.encryption->manifestClass = 11;
  write(contents);
  expectFailure(TidewellError::ioFailure("This backup is missing protection class 11."));
  EXPECT_EQ(reports_[0].manifestKeyClass, 11U);
}

TEST_F(OpenedBackupTest, AnEncryptedBackupWithoutItsIndexIsReported) {
  write(encryptedContents());
  fs::remove(device_ / "Manifest.db");
  rememberBackup();
  expectFailure(TidewellError::missingManifestDB());
  EXPECT_EQ(reports_[0].classKeysUnwrapped, 8);
}

TEST_F(OpenedBackupTest, AnEncryptedIndexThatIsAFIFOIsMissing) {
  write(encryptedContents());
  fs::remove(device_ / "Manifest.db");
  ASSERT_EQ(::mkfifo((device_ / "Manifest.db").c_str(), 0600), 0);
  rememberBackup();
  expectFailure(TidewellError::missingManifestDB());
}

TEST_F(OpenedBackupTest, AnIndexThatDecryptsToNoDatabaseIsReported) {
  write(encryptedContents());
  writeFile(device_ / "Manifest.db", aesCbcEncrypt(backup_.manifestKey, Bytes(4096, 7)));
  rememberBackup();
  expectFailure(TidewellError::manifestDecryptFailed(
      "Decrypted 4096 bytes from 4112-byte Manifest.db, but the file does not start with a SQLite header."));
  EXPECT_EQ(reports_[0].manifestCipherByteCount, 4112);
  EXPECT_EQ(reports_[0].manifestDecryptedByteCount, 4096);
  EXPECT_FALSE(reports_[0].sqliteHeaderOK);
  EXPECT_EQ(reports_[0].sqliteJournal, "unknown");
}

TEST_F(OpenedBackupTest, AnEmptyOrCutIndexIsAnErrorAndNoCrash) {
  write(encryptedContents());
  const Bytes whole = readFile(device_ / "Manifest.db");
  for (const std::size_t length : {0U, 1U, 15U, 16U, 17U}) {
    writeFile(device_ / "Manifest.db", ByteView(whole).first(length));
    reports_.clear();
    EXPECT_THROW(index(open(password)), TidewellError) << length;
    EXPECT_THAT(reports_, SizeIs(1)) << length;
  }
  rememberBackup();
}

TEST_F(OpenedBackupTest, APropertyListThatBecomesUnreadableStillGivesAReport) {
  write(encryptedContents());
  setKey(backup_.manifest, "BackupKeyBag", "text");
  rewriteManifest();
  expectFailure(TidewellError::ioFailure("This encrypted backup is missing BackupKeyBag."));
}

TEST_F(OpenedBackupTest, CancellingAtAnyStageLeavesNothingBehind) {
  write(encryptedContents());
  int checks = 0;
  open(password, [&] { return ++checks < 0; });
  const int stages = checks;
  EXPECT_GE(stages, 5);
  for (int stage = 1; stage <= stages; ++stage) {
    reports_.clear();
    checks = 0;
    EXPECT_THAT([&] { open(password, [&] { return ++checks == stage; }); }, failsWith(TidewellError::cancelled()))
        << stage;
    EXPECT_EQ(checks, stage) << "nothing goes on after a cancellation";
    EXPECT_THAT(reports_, SizeIs(1)) << stage;
    EXPECT_THAT(temporary_.names(), IsEmpty()) << stage;
  }
}

TEST_F(OpenedBackupTest, CancelsBetweenTheTwoDerivations) {
  // The second derivation alone would take a quarter of a minute.
  BackupContents contents = encryptedContents();
  write(contents);
  Bytes bag = backup_.keyBag->blob;
  const Bytes tag = bytesOf("ITER");
  const auto iterations = std::search(bag.begin(), bag.end(), tag.begin(), tag.end());
  ASSERT_NE(iterations, bag.end());
  iterations[8] = 0x05;
  setKey(backup_.manifest, "BackupKeyBag", bag);
  rewriteManifest();
  int checks = 0;
  // The third check is the first of the unlocking, the fourth stands between the derivations.
  EXPECT_THAT([&] { open(password, [&] { return ++checks == 4; }); }, failsWith(TidewellError::cancelled()));
  EXPECT_EQ(reports_.at(0), (BackupUnlockReport{.keyBagParsed = true, .classKeyCount = 11}));
}

TEST_F(OpenedBackupTest, AnObserverOrACheckThatThrowsLeavesNothingBehind) {
  write(encryptedContents());
  EXPECT_THROW(OpenedBackup::open(device_, password, {},
                                  [](const BackupUnlockReport&) { throw std::runtime_error("observer"); }),
               std::runtime_error);
}

TEST_F(OpenedBackupTest, NeitherReportNorErrorHoldsThePassword) {
  write(encryptedContents());
  const std::string secret = "wrong-but-secret";
  try {
    open(secret);
    ADD_FAILURE() << "the password is wrong";
  } catch (const TidewellError& error) {
    EXPECT_EQ(error.errorDescription().find(secret), std::string::npos);
  }
  for (const std::string& line : reports_.at(0).diagnosticLines()) EXPECT_EQ(line.find(secret), std::string::npos);
}

TEST_F(OpenedBackupTest, AJournalBesideALockedIndexIsAWarning) {
  write(encryptedContents());
  EXPECT_THAT(open(password).warnings(), IsEmpty());
  for (const char* ending : {"-wal", "-journal"}) {
    const fs::path journal = (device_ / "Manifest.db").native() + ending;
    writeFile(journal, "");
    rememberBackup();
    EXPECT_THAT(open(password).warnings(), IsEmpty()) << "it holds nothing";
    writeFile(journal, "locked rows");
    rememberBackup();
    EXPECT_THAT(open(password).warnings(),
                testing::ElementsAre(testing::StartsWith("The newest files may be missing: the journal")));
    fs::remove(journal);
  }
  rememberBackup();
}

}  // namespace
}  // namespace Fixture
