#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/Library/Library.h"
#include "TidewellCore/Platform/Base64.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::textOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

std::string digestOf(const std::string& content) {
  return Base64::encode(sha256(ByteView(reinterpret_cast<const std::uint8_t*>(content.data()), content.size())));
}

// The photo of an export, whose digest WhatsApp's database has.
class SentDigestTest : public testing::TestWithParam<bool> {
 protected:
  SentDigestTest() : scene(ExportTest::smallBackup(GetParam())) {}

  void exportWith(const Fixture::SQLValue& digest) {
    scene.contents.whatsApp.mediaFiles[0].digest = digest;
    scene.write();
    scene.run(ExportOptions::defaultOptions());
  }
  std::vector<std::string> findings(bool withBackup = false) const {
    VerifyJob job{.destination = scene.destination};
    if (withBackup) job.backup = scene.backup;
    if (scene.contents.encryption) job.password = scene.contents.encryption->keyBag.password;
    std::vector<std::string> messages;
    for (const auto& finding : Verification::run(job).findings) {
      EXPECT_EQ(finding.kind, VerifySummary::Kind::changed) << finding.message;
      messages.push_back(finding.message);
    }
    return messages;
  }
  std::vector<std::string> findingsWithBackup() const { return findings(true); }
  fs::path photo() const {
    for (const auto& entry : fs::recursive_directory_iterator(scene.content)) {
      if (entry.path().filename().string().ends_with("_aa1.jpg")) return entry.path();
    }
    return {};
  }
  void damage() const { std::ofstream(photo(), std::ios::binary) << "b photo"; }
  // As the library has them.
  KeptMedium keptPhoto() const {
    const Library library = Library::open(scene.content);
    for (const KeptMedium& medium : library.media().media()) {
      if (medium.path.ends_with("aa1.jpg")) return medium;
    }
    return {};
  }

  ExportTest::Scene scene;
  const std::string whole = "a photo";
};

INSTANTIATE_TEST_SUITE_P(Backups, SentDigestTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(SentDigestTest, AFileThatIsAsItWasSentIsHeldToIt) {
  exportWith(digestOf(whole));
  EXPECT_EQ(keptPhoto().sentDigest, digestOf(whole));
  EXPECT_EQ(keptPhoto().digest, "");
  EXPECT_THAT(findings(), IsEmpty());
  EXPECT_EQ(keptPhoto().digest, digestOf(whole));
  damage();
  EXPECT_THAT(findings(), ElementsAre(EndsWith("aa1.jpg” has other bytes than when it was written. Delete it, or move "
                                               "it out of the export, and export again.")));
}

// The phone transcodes and edits what it sends, and keeps that.
TEST_P(SentDigestTest, AFileThatThePhoneChangedIsNotDamaged) {
  exportWith(digestOf("what was sent"));
  EXPECT_THAT(findings(), IsEmpty());
  EXPECT_THAT(findingsWithBackup(), IsEmpty());
  EXPECT_EQ(keptPhoto().digest, digestOf(whole));
}

TEST_P(SentDigestTest, TheBackupTellsDamageFromBeforeTheFirstVerification) {
  exportWith(digestOf(whole));
  damage();
  for (int time = 0; time < 2; ++time) {
    EXPECT_THAT(findingsWithBackup(),
                ElementsAre(EndsWith("aa1.jpg” has other bytes than in the backup. Delete it, or move it out of the "
                                     "export, and export again.")));
  }
  EXPECT_EQ(keptPhoto().digest, "") << "it is not trusted";
  fs::remove(photo());
  scene.run(ExportOptions::defaultOptions());
  EXPECT_THAT(findingsWithBackup(), IsEmpty());
}

// Without the backup nobody can say; with it, somebody can still later.
TEST_P(SentDigestTest, WithoutTheBackupTheFirstDigestIsKept) {
  exportWith(digestOf(whole));
  damage();
  EXPECT_THAT(findings(), IsEmpty());
  EXPECT_EQ(findingsWithBackup().size(), 1U);
}

TEST_P(SentDigestTest, AFileThatWasPutRightIsRight) {
  exportWith(digestOf(whole));
  damage();
  EXPECT_THAT(findings(), IsEmpty());
  std::ofstream(photo(), std::ios::binary) << whole;
  EXPECT_THAT(findings(), IsEmpty());
  damage();
  EXPECT_EQ(findings().size(), 1U) << "from now on it is held to it";
}

TEST_P(SentDigestTest, LeavesNoDecryptedFileBehind) {
  const ExportTest::PrivateTemporaryFolder temporary;
  exportWith(digestOf("what was sent"));
  EXPECT_THAT(findingsWithBackup(), IsEmpty());
  EXPECT_TRUE(temporary.isEmpty());
}

TEST_P(SentDigestTest, IsKeptWhereANewerBackupLacksIt) {
  exportWith(digestOf(whole));
  exportWith({});
  EXPECT_EQ(keptPhoto().sentDigest, digestOf(whole));
  exportWith(digestOf("as it was sent again"));
  EXPECT_EQ(keptPhoto().sentDigest, digestOf("as it was sent again"));
}

TEST_P(SentDigestTest, OnlyADigestIsOne) {
  const std::string digest = digestOf(whole);
  std::string urlSafe = digest;
  urlSafe[0] = '-';
  std::string loose = digest;  // bits beyond the last byte
  loose[42] = static_cast<char>(loose[42] + 1);
  const std::string shorter = Base64::encode(Bytes(31, 7)), longer = Base64::encode(Bytes(33, 7));
  for (const std::string& other : {std::string(), std::string("Ana"), urlSafe, loose, shorter, longer, digest + "\n",
                                   " " + digest.substr(1), digest.substr(0, 43)}) {
    exportWith(other);
    EXPECT_EQ(keptPhoto().sentDigest, "") << other;
  }
  exportWith(7);
  EXPECT_EQ(keptPhoto().sentDigest, "");
  exportWith(digest);
  EXPECT_EQ(keptPhoto().sentDigest, digest);
}

// As version 1 left it, without digests.
TEST_P(SentDigestTest, ALibraryOfAnEarlierVersionLearnsIt) {
  exportWith(digestOf(whole));
  EXPECT_THAT(findings(), IsEmpty());
  {
    const SQLiteDB library((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
    for (const char* sql :
         {"ALTER TABLE medium DROP COLUMN doubtful", "ALTER TABLE medium DROP COLUMN sent_digest",
          "ALTER TABLE medium DROP COLUMN digest", "ALTER TABLE message DROP COLUMN said_at", "DROP TABLE title",
          "DROP TABLE member", "DROP TABLE rendering", "DROP TABLE block", "PRAGMA user_version = 1"}) {
      library.query(sql, {}, [](const SQLiteRow&) {});
    }
  }
  EXPECT_NO_THROW(LibraryFile::look(scene.content)) << "it can be read as it is";
  scene.run(ExportOptions::defaultOptions());
  EXPECT_EQ(keptPhoto().sentDigest, digestOf(whole));
  EXPECT_FALSE(fs::exists(scene.content / ".tidewell-archive-2.sqlite")) << "it was not set aside";
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_P(SentDigestTest, ALibraryOfTheVersionBeforeIsBroughtUpToDate) {
  exportWith(digestOf(whole));
  {
    const SQLiteDB library((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
    for (const char* sql : {"ALTER TABLE medium DROP COLUMN doubtful", "PRAGMA user_version = 2"}) {
      library.query(sql, {}, [](const SQLiteRow&) {});
    }
  }
  EXPECT_NO_THROW(LibraryFile::look(scene.content)) << "it can be read as it is";
  EXPECT_EQ(scene.run(ExportOptions::defaultOptions()).copiedCount, 0);
  EXPECT_FALSE(fs::exists(scene.content / ".tidewell-archive-2.sqlite")) << "it was not set aside";
  EXPECT_THAT(findings(), IsEmpty());
}

}  // namespace
