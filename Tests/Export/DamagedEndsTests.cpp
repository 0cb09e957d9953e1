#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/TidewellError.h"

// The last block of an encrypted file tells damage that its length does not: what was copied so is told until the
// backup has it whole, and copied again then.
namespace {

namespace fs = std::filesystem;
using ExportTest::Scene;
using testing::ElementsAre;
using testing::IsEmpty;

const ExportOptions everything = ExportOptions::defaultOptions();

struct DamagedEndsTest : testing::Test {
  // A picture of Ana's, as WhatsApp keeps it.
  void addPicture(Fixture::StorageOptions storage) {
    scene.contents.whatsApp.files.push_back({.relativePath = "Media/Profile/5511900001111-1.jpg",
                                             .content = Fixture::bytesOf("\xFF\xD8\xFF" + std::string(60, '.')),
                                             .storage = std::move(storage)});
    scene.write();
  }

  fs::path storedMedium() const {
    const Fixture::WhatsAppContents& app = scene.contents.whatsApp;
    return Fixture::storedPath(scene.backup, Fixture::fileIDOf(app.domain, "Message/" + app.mediaFiles[0].localPath));
  }

  static void damageEnd(const fs::path& stored) {
    Fixture::Bytes bytes = Fixture::readFile(stored);
    bytes.back() ^= 0x40;
    Fixture::writeFile(stored, bytes);
  }

  fs::path storedDatabase(const std::string& name) const {
    return Fixture::storedPath(scene.backup, Fixture::fileIDOf(scene.contents.whatsApp.domain, name));
  }

  // Leaves a copy of the medium, whose end is damaged, that the library knows nothing of.
  void breakOff() const {
    EXPECT_THROW(scene.run(everything, {.isCancelled = [&] { return fs::exists(scene.content / "Ana"); }}),
                 TidewellError);
    EXPECT_TRUE(fs::exists(scene.content / "Ana"));
  }

  void expectCopiedAgain() const {
    const ExportSummary mended = scene.run(everything);
    EXPECT_EQ(mended.copiedCount, 1);
    EXPECT_THAT(mended.warnings, IsEmpty());
    EXPECT_EQ(scene.run(everything).copiedCount, 0);
    EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
  }

  Scene scene{ExportTest::smallBackup(true)};
};

// A failing disk leaves zeroes; their length is right.
TEST_F(DamagedEndsTest, AFileWhoseEndDoesNotDecryptIsCopiedAndTold) {
  const fs::path stored = storedMedium();
  Fixture::writeFile(stored, Fixture::Bytes(fs::file_size(stored)));
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 5);
  EXPECT_THAT(summary.warnings, ElementsAre(testing::HasSubstr("aa1.jpg” is damaged in the backup, or locked with")));
  EXPECT_TRUE(summary.mayBeIncomplete);
}

// Only its last block, so that everything else of it can be read.
TEST_F(DamagedEndsTest, AFileWhoseEndDoesNotDecryptIsToldUntilTheBackupHasItWhole) {
  const fs::path stored = storedMedium();
  const Fixture::Bytes whole = Fixture::readFile(stored);
  damageEnd(stored);
  const auto isTold = testing::Contains(testing::HasSubstr("aa1.jpg” is damaged in the backup"));
  const auto stopsEarly = [&] { return fs::exists(scene.content / "Ana"); };
  try {
    scene.run(everything, {.isCancelled = stopsEarly});
  } catch (const TidewellError&) {
  }
  EXPECT_TRUE(fs::exists(scene.content / "Ana"));
  for (int times = 0; times < 2; ++times) EXPECT_THAT(scene.run(everything).warnings, isTold) << times;
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings,
              ElementsAre(testing::Field(&VerifySummary::Finding::message, testing::HasSubstr("may be damaged"))));
  const std::size_t before = ExportTest::filesBelow(scene.content / "Ana").size();

  Fixture::writeFile(stored, whole);
  const ExportSummary mended = scene.run(everything);
  EXPECT_EQ(mended.copiedCount, 1);
  EXPECT_THAT(mended.warnings, IsEmpty());
  EXPECT_EQ(ExportTest::filesBelow(scene.content / "Ana").size(), before + 1) << "beside the damaged one";
  EXPECT_EQ(scene.run(everything).copiedCount, 0);
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
}

TEST_F(DamagedEndsTest, AProfilePictureWhoseEndDoesNotDecryptIsToldEachTime) {
  addPicture({});
  damageEnd(Fixture::storedPath(
      scene.backup, Fixture::fileIDOf(scene.contents.whatsApp.domain, "Media/Profile/5511900001111-1.jpg")));
  for (int times = 0; times < 2; ++times) {
    const ExportSummary summary = scene.run(everything);
    EXPECT_THAT(summary.warnings, ElementsAre(testing::StartsWith("“5511900001111-1.jpg” is damaged in the backup")));
    EXPECT_TRUE(summary.mayBeIncomplete);
  }
}

// SQLite sees nothing amiss in a page whose last bytes are other ones.
TEST_F(DamagedEndsTest, ADatabaseWhoseEndDoesNotDecryptIsTold) {
  damageEnd(Fixture::storedPath(scene.backup, Fixture::fileIDOf(scene.contents.whatsApp.domain, "ChatStorage.sqlite")));
  EXPECT_THAT(scene.run(everything).warnings,
              ElementsAre(testing::HasSubstr("Some messages may be missing: WhatsApp’s chat database is damaged.")));
}

TEST_F(DamagedEndsTest, AnIndexWhoseEndDoesNotDecryptIsTold) {
  damageEnd(scene.backup / "Manifest.db");
  EXPECT_THAT(scene.run(everything).warnings,
              ElementsAre(testing::HasSubstr("Some files may be missing: the backup’s file index is damaged.")));
}

TEST_F(DamagedEndsTest, AJournalWhoseEndDoesNotDecryptIsTold) {
  damageEnd(storedDatabase("ChatStorage.sqlite-wal"));
  EXPECT_THAT(scene.run(everything).warnings, ElementsAre(testing::HasSubstr("messages may be missing")));
}

TEST_F(DamagedEndsTest, AnIndexWithADamagedEndAndDamagedPagesIsToldOnce) {
  Fixture::Bytes bytes = Fixture::readFile(scene.backup / "Manifest.db");
  bytes[bytes.size() - 1] ^= 0x40;
  bytes[bytes.size() - 4096] ^= 0x40;
  Fixture::writeFile(scene.backup / "Manifest.db", bytes);
  EXPECT_THAT(scene.run(everything).warnings,
              ElementsAre(testing::HasSubstr("Some files may be missing: the backup’s file index is damaged.")));
}

// It is no matter of an export that leaves it out, but the next that wants it must not take it for whole.
TEST_F(DamagedEndsTest, ACopyOfAnExportThatWasBrokenOffIsDoubtedWhereItsKindIsLeftOut) {
  const fs::path stored = storedMedium();
  const Fixture::Bytes whole = Fixture::readFile(stored);
  damageEnd(stored);
  breakOff();
  ExportOptions withoutImages = everything;
  withoutImages.includedKinds.erase(MediaKind::photos);
  EXPECT_THAT(scene.run(withoutImages).warnings, IsEmpty());
  EXPECT_THAT(scene.run(everything).warnings, ElementsAre(testing::HasSubstr("aa1.jpg” is damaged in the backup")));
  Fixture::writeFile(stored, whole);
  expectCopiedAgain();
}

TEST_F(DamagedEndsTest, ASoundCopyOfAnExportThatWasBrokenOffIsKnownWhereItsKindIsLeftOut) {
  breakOff();
  ExportOptions withoutImages = everything;
  withoutImages.includedKinds.erase(MediaKind::photos);
  scene.run(withoutImages);
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
  EXPECT_THAT(scene.run(everything).warnings, IsEmpty());
}

TEST_F(DamagedEndsTest, ADoubtfulCopyIsDoubtedAfterABackupThatLacksItsMedium) {
  damageEnd(storedMedium());
  scene.run(everything);
  const Fixture::BackupContents whole = scene.contents;
  Fixture::WhatsAppContents& app = scene.contents.whatsApp;
  app.mediaItems = {{.message = 1, .localPath = app.mediaFiles[0].localPath}};
  app.mediaFiles.erase(app.mediaFiles.begin());
  scene.write();
  scene.run(everything);
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings,
              ElementsAre(testing::Field(&VerifySummary::Finding::message, testing::HasSubstr("may be damaged"))));
  scene.contents = whole;
  scene.write();
  expectCopiedAgain();
}

TEST_F(DamagedEndsTest, APlainBackupThatHasTheMediumWholeMendsADoubtfulCopy) {
  damageEnd(storedMedium());
  scene.run(everything);
  scene.contents.encryption.reset();
  scene.write();
  expectCopiedAgain();
}

}  // namespace
