#include "TidewellCore/Crypto/BackupUnlocker.h"

#include <gmock/gmock.h>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/Platform/PropertyList.h"
#include "TidewellCore/Platform/SQLiteDB.h"

namespace {

namespace fs = std::filesystem;
using Fixture::failsWith;
using testing::ElementsAre;

const std::string password = "correct horse";

class BackupUnlockerTest : public testing::Test {
 protected:
  // Encrypted with quick derivations; nothing in it but the index and its keys.
  void write(Fixture::Encryption encryption = {}) {
    written_ = Fixture::writeBackup({.encryption = std::move(encryption)}, backup_);
  }
  void writeManifest() const {
    Fixture::writeFile(backup_ / "Manifest.plist", Fixture::binaryPlist(written_.manifest));
  }
  BackupUnlocker unlock(const RunControl& control = {}) {
    return BackupUnlocker::unlock(backup_, password, report_, control);
  }
  void decrypt(const BackupUnlocker& unlocker) {
    unlocker.decryptManifestDatabase(backup_ / "Manifest.db", copy_, report_);
  }
  std::string line(std::size_t index) const { return report_.diagnosticLines().at(index); }

  const Fixture::TemporaryDirectory folder_;
  const fs::path backup_ = folder_ / "backup";
  const fs::path copy_ = folder_ / "working" / "Manifest.db";
  Fixture::WrittenBackup written_;
  BackupUnlockReport report_;
};

TEST_F(BackupUnlockerTest, YieldsTheKeysOfTheBackup) {
  write();
  const BackupUnlocker unlocker = unlock();
  EXPECT_EQ(unlocker.keyBag.unwrappedClassKeyCount(), 8u);
  ASSERT_TRUE(unlocker.manifestKey);
  EXPECT_EQ(Bytes(unlocker.manifestKey->begin(), unlocker.manifestKey->end()), written_.manifestKey);
}

TEST_F(BackupUnlockerTest, ReportsEveryStage) {
  write({.keyBag = {.password = password}, .manifestClass = 4});
  decrypt(unlock());
  const auto cipherSize = fs::file_size(backup_ / "Manifest.db");
  EXPECT_THAT(
      report_.diagnosticLines(),
      ElementsAre("unlock: keybag parsed yes", "unlock: class keys 8/11 unwrapped", "unlock: ManifestKey class 4",
                  "unlock: Manifest.db ciphertext " + std::to_string(cipherSize) + " bytes",
                  "unlock: Manifest.db decrypted " + std::to_string(written_.manifestDatabase.size()) + " bytes",
                  "unlock: SQLite header ok", "unlock: SQLite journal wal", "unlock: writable temp copy no"));
}

TEST_F(BackupUnlockerTest, AWrongPasswordStopsAtTheClassKeys) {
  write();
  EXPECT_THAT([&] { BackupUnlocker::unlock(backup_, "incorrect", report_); },
              failsWith(TidewellError::wrongBackupPassword()));
  EXPECT_THAT(
      report_.diagnosticLines(),
      ElementsAre("unlock: keybag parsed yes", "unlock: class keys 0/11 unwrapped", "unlock: ManifestKey class missing",
                  "unlock: Manifest.db ciphertext 0 bytes", "unlock: Manifest.db decrypted 0 bytes",
                  "unlock: SQLite header missing", "unlock: SQLite journal unknown", "unlock: writable temp copy no"));
}

TEST_F(BackupUnlockerTest, NeitherReportNorErrorHoldsThePassword) {
  write();
  const std::string wrong = "s3cret-and-wrong";
  try {
    BackupUnlocker::unlock(backup_, wrong, report_);
    ADD_FAILURE() << "the password is wrong";
  } catch (const TidewellError& error) {
    EXPECT_EQ(std::string(error.what()).find(wrong), std::string::npos);
  }
  for (const std::string& reported : report_.diagnosticLines()) EXPECT_EQ(reported.find(wrong), std::string::npos);
}

TEST_F(BackupUnlockerTest, TellsThatItIsUnlocking) {
  write();
  std::vector<ExportProgress> seen;
  unlock({.progress = [&](const ExportProgress& progress) { seen.push_back(progress); }});
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].phase, ExportProgress::Phase::unlocking);
  EXPECT_EQ(seen[0].currentFileName, "Unlocking backup\u2026");
}

TEST_F(BackupUnlockerTest, CanBeCancelledAtEveryQuestion) {
  write();
  int questions = 0;
  unlock({.isCancelled = [&] { return ++questions < 0; }});
  EXPECT_EQ(questions, 5) << "at the start, after parsing, and three times while unlocking";
  for (int stage = 1; stage <= questions; ++stage) {
    int asked = 0;
    EXPECT_THAT([&] { unlock({.isCancelled = [&] { return ++asked == stage; }}); },
                failsWith(TidewellError::cancelled()));
  }
}

TEST_F(BackupUnlockerTest, CancelledAtTheStartItReadsNothing) {
  bool reported = false;
  const RunControl control{.progress = [&](const ExportProgress&) { reported = true; },
                           .isCancelled = [] { return true; }};
  EXPECT_THAT([&] { unlock(control); }, failsWith(TidewellError::cancelled()));
  EXPECT_FALSE(reported);
}

TEST_F(BackupUnlockerTest, CancellingBetweenTheDerivationsLeavesNoWorkingFolder) {
  write();
  const auto before = Fixture::treeSnapshot(folder_.path());
  int asked = 0;
  EXPECT_THAT([&] { unlock({.isCancelled = [&] { return ++asked == 4; }}); }, failsWith(TidewellError::cancelled()));
  EXPECT_EQ(Fixture::treeSnapshot(folder_.path()), before);
}

TEST_F(BackupUnlockerTest, AMissingKeyBagIsSaidToBeMissing) {
  write({.keyBag = {.password = password}, .withoutKeyBag = true});
  EXPECT_THAT([&] { unlock(); }, failsWith("This encrypted backup is missing BackupKeyBag."));
  EXPECT_EQ(line(0), "unlock: keybag parsed no");
}

TEST_F(BackupUnlockerTest, AKeyBagOfAnotherTypeCountsAsMissing) {
  write();
  Fixture::setKey(written_.manifest, "BackupKeyBag", "text");
  writeManifest();
  EXPECT_THAT([&] { unlock(); }, failsWith("This encrypted backup is missing BackupKeyBag."));
}

TEST_F(BackupUnlockerTest, ATruncatedKeyBagIsSaidToBeTruncated) {
  write();
  Bytes blob = written_.keyBag->blob;
  blob.resize(blob.size() - 10);
  Fixture::setKey(written_.manifest, "BackupKeyBag", blob);
  writeManifest();
  EXPECT_THAT([&] { unlock(); }, failsWith("The backup key bag is truncated."));
}

TEST_F(BackupUnlockerTest, PassesOnWhatThePropertyListSays) {
  write();
  Fixture::writeFile(backup_ / "Manifest.plist", "no property list");
  EXPECT_THROW(unlock(), PropertyListError);
  Fixture::writeFile(backup_ / "Manifest.plist", Fixture::binaryPlist(Fixture::PlistArray{}));
  EXPECT_THAT([&] { unlock(); }, failsWith("“Manifest.plist” is not a dictionary plist."));
  fs::remove(backup_ / "Manifest.plist");
  EXPECT_THROW(unlock(), fs::filesystem_error);
}

TEST_F(BackupUnlockerTest, AMissingManifestKeyIsNoticedWhenTheIndexIsDecrypted) {
  write({.keyBag = {.password = password}, .withoutManifestKey = true});
  const BackupUnlocker unlocker = unlock();
  EXPECT_EQ(unlocker.manifestKey, std::nullopt);
  EXPECT_EQ(line(2), "unlock: ManifestKey class missing");
  EXPECT_THAT([&] { decrypt(unlocker); },
              failsWith(TidewellError::manifestDecryptFailed("ManifestKey is missing after the key bag unlocked.")));
}

TEST_F(BackupUnlockerTest, AManifestKeyOfALockedClassNamesIt) {
  write({.keyBag = {.password = password}, .manifestClass = 9});
  EXPECT_THAT([&] { unlock(); }, failsWith("This backup is missing protection class 9."));
  EXPECT_EQ(line(2), "unlock: ManifestKey class 9") << "the report came that far";
}

TEST_F(BackupUnlockerTest, DecryptsTheIndex) {
  write();
  decrypt(unlock());
  EXPECT_EQ(Fixture::readFile(copy_), written_.manifestDatabase);
}

TEST_F(BackupUnlockerTest, TheIndexOpensAfterItsJournalIsConverted) {
  write();
  decrypt(unlock());
  EXPECT_EQ(report_.sqliteJournal, "wal");
  EXPECT_TRUE(SQLiteDB(copy_, SQLiteDB::OpenMode::writableCopy, "convert decrypted Manifest.db").tableExists("Files"));
  EXPECT_EQ(report_.sqliteJournal, "wal") << "still the journal from before";
  EXPECT_EQ(Fixture::readFile(copy_)[18], 1);
}

TEST_F(BackupUnlockerTest, AnIndexWithoutPaddingIsTakenAsItIs) {
  write();
  Fixture::writeFile(backup_ / "Manifest.db",
                     Fixture::aesCbcEncrypt(written_.manifestKey, written_.manifestDatabase, Fixture::Padding::none));
  decrypt(unlock());
  EXPECT_EQ(Fixture::readFile(copy_), written_.manifestDatabase);
}

TEST_F(BackupUnlockerTest, AnIndexThatIsNoDatabaseIsRefusedWithBothSizes) {
  write();
  Fixture::writeFile(backup_ / "Manifest.db", Fixture::aesCbcEncrypt(written_.manifestKey, Bytes(4096, 0x41)));
  EXPECT_THAT([&] { decrypt(unlock()); },
              failsWith(TidewellError::manifestDecryptFailed("Decrypted 4096 bytes from 4112-byte Manifest.db, but "
                                                             "the file does not start with a SQLite header.")));
  EXPECT_EQ(line(5), "unlock: SQLite header missing");
  EXPECT_FALSE(fs::exists(copy_)) << "nothing is written";
}

TEST_F(BackupUnlockerTest, AnIndexCutInsideABlockIsAFailure) {
  write();
  fs::resize_file(backup_ / "Manifest.db", 1000);
  EXPECT_THAT([&] { decrypt(unlock()); }, failsWith("Could not decrypt a backup file."));
  fs::resize_file(backup_ / "Manifest.db", 0);
  EXPECT_THAT([&] { decrypt(unlock()); }, failsWith("Could not decrypt a backup file."));
}

TEST_F(BackupUnlockerTest, AMissingIndexIsSaidToBeMissing) {
  write();
  fs::remove(backup_ / "Manifest.db");
  EXPECT_THAT([&] { decrypt(unlock()); }, failsWith(TidewellError::missingManifestDB()));
  fs::create_symlink("/dev/zero", backup_ / "Manifest.db");
  EXPECT_THAT([&] { decrypt(unlock()); }, failsWith(TidewellError::missingManifestDB())) << "a link is no index";
}

TEST_F(BackupUnlockerTest, LeavesTheBackupAlone) {
  write();
  const auto before = Fixture::treeSnapshot(backup_);
  decrypt(unlock());
  EXPECT_EQ(Fixture::treeSnapshot(backup_), before);
}

TEST(BackupUnlocker, NamesTheJournalOfADatabase) {
  Bytes header(100, 0);
  const auto nameOf = [&](std::uint8_t version) {
    header[18] = version;
    return BackupUnlocker::sqliteJournalName(header);
  };
  EXPECT_EQ(nameOf(1), "delete");
  EXPECT_EQ(nameOf(2), "wal");
  EXPECT_EQ(nameOf(0), "other(0)");
  EXPECT_EQ(nameOf(255), "other(255)");
  EXPECT_EQ(BackupUnlocker::sqliteJournalName(Bytes(18, 1)), "unknown");
  EXPECT_EQ(BackupUnlocker::sqliteJournalName(Bytes(19, 1)), "delete");
  EXPECT_EQ(BackupUnlocker::sqliteJournalName({}), "unknown");
}

}  // namespace
