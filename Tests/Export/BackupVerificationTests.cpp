#include "TidewellCore/Export/BackupVerification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/MessageBlobs.h"
#include "Tests/Support/SampleFiles.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/Library/LibraryFile.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::firstDate;
using ExportTest::textOf;
using Fixture::failsWith;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Kind = VerifySummary::Kind;

// An export and the backup that it was made of.
class Compared {
 protected:
  explicit Compared(bool isEncrypted = false) : scene(ExportTest::smallBackup(isEncrypted)) {}

  void run(const ExportOptions& options = ExportOptions::defaultOptions()) const { scene.run(options); }
  VerifySummary verify(const RunControl& control = {}) const {
    VerifyJob job{.destination = scene.destination, .backup = scene.backup};
    if (scene.contents.encryption) job.password = scene.contents.encryption->keyBag.password;
    return Verification::run(job, control);
  }
  // What is wrong, and each of it absent from the archive.
  std::vector<std::string> absences() const {
    std::vector<std::string> messages;
    for (const VerifySummary::Finding& finding : verify().findings) {
      EXPECT_EQ(finding.kind, Kind::notArchived) << finding.message;
      messages.push_back(finding.message);
    }
    return messages;
  }
  Fixture::WhatsAppContents& app() { return scene.contents.whatsApp; }
  void say(std::int64_t chat, double later, const std::string& text) {
    app().messages.push_back({.chat = chat, .date = firstDate + later, .text = text});
  }
  fs::path exported(const std::string& ending) const {
    for (const auto& entry : fs::recursive_directory_iterator(scene.content)) {
      if (entry.path().filename().string().ends_with(ending)) return entry.path();
    }
    return {};
  }
  // The backup loses the bytes of a medium, and its list of files still names it.
  void loseStored(std::size_t medium) const {
    const Fixture::WhatsAppContents& whatsApp = scene.contents.whatsApp;
    const std::string path = "Message/" + whatsApp.mediaFiles[medium].localPath;
    ASSERT_TRUE(fs::remove(Fixture::storedPath(scene.backup, Fixture::fileIDOf(whatsApp.domain, path))));
  }

  ExportTest::Scene scene;
};

class BackupVerificationTest : public testing::TestWithParam<bool>, protected Compared {
 protected:
  BackupVerificationTest() : Compared(GetParam()) {}
};
class PlainBackupVerificationTest : public testing::Test, protected Compared {};

INSTANTIATE_TEST_SUITE_P(Backups, BackupVerificationTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(BackupVerificationTest, IsSilentOnWhatWasExported) {
  run();
  const VerifySummary summary = verify();
  EXPECT_THAT(summary.findings, IsEmpty());
  EXPECT_THAT(summary.warnings, IsEmpty());
  EXPECT_EQ(summary.mediaCount, 5);
}

TEST_P(BackupVerificationTest, TellsMessagesOfEachChatThatCameSince) {
  run();
  for (int number = 0; number < 3; ++number) say(1, 7200 + number, "new");
  say(3, 7200, "hi");
  scene.write();
  EXPECT_THAT(absences(), UnorderedElementsAre("3 messages of “Ana” are not in the archive. Export again.",
                                               "1 message of “Bea” is not in the archive. Export again."));
  run();
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_P(BackupVerificationTest, TellsMessagesThatSayMoreSince) {
  run();
  app().messages[0].text = "other words";
  app().messages[1].receiptInfo = Fixture::receiptInfo({{.jid = ana, .emoji = "👍"}});
  scene.write();
  EXPECT_THAT(absences(), ElementsAre("2 messages of “Ana” say more in the backup than in the archive. Export again."));
  run();
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_P(BackupVerificationTest, TellsMessagesThatTheNewerBackupSaysLessOf) {
  say(1, 7200, "said");
  const Fixture::WhatsAppContents before = app();
  app().messages.back().text = {};
  app().messages.back().type = Fixture::deletedType;
  scene.write();
  run();
  EXPECT_THAT(absences(), IsEmpty());
  app() = before;
  scene.contents.backupTime -= 1000;
  scene.write();
  EXPECT_THAT(absences(), ElementsAre("1 message of “Ana” says more in the backup than in the archive. Export again."));
  run();
  EXPECT_THAT(absences(), IsEmpty());
}

// The backup is the one that the library had it from, and says nothing new.
TEST_P(BackupVerificationTest, TellsWhatSomebodyTookFromTheLibraryAndTheNextExportBringsItBack) {
  say(1, 7200, "said");
  scene.write();
  run();
  for (const char* damage : {"UPDATE message SET text = NULL", "UPDATE message SET text = 'other words'"}) {
    SQLiteDB((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept)
        .forEachRow(damage, [](const SQLiteRowView&) {});
    EXPECT_THAT(absences(), testing::Contains(testing::HasSubstr("more in the backup than in the archive"))) << damage;
    run();
    EXPECT_THAT(absences(), IsEmpty()) << damage;
  }
}

TEST_P(BackupVerificationTest, TellsAChatThatCameSince) {
  run();
  app().chats.push_back({.jid = "5511900003333@s.whatsapp.net", .name = "Cora"});
  say(4, 7200, "hi");
  say(4, 7201, "it is me");
  scene.write();
  EXPECT_THAT(absences(), ElementsAre("2 messages of “Cora” are not in the archive. Export again."));
}

TEST_P(BackupVerificationTest, TellsMediaByChatAndKindThatCameSince) {
  run();
  for (const char* name : {"fa6", "ga7"}) app().mediaFiles.push_back(ExportTest::media(ana, name, "jpg", "photo", {}));
  app().mediaFiles.push_back(ExportTest::media(ana, "ha8", "mp4", "video", {}));
  scene.write();
  EXPECT_THAT(absences(), UnorderedElementsAre("2 photos of “Ana” are not in the archive. Export again.",
                                               "1 video of “Ana” is not in the archive. Export again."));
  run();
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_P(BackupVerificationTest, TellsKindsThatWereLeftOut) {
  ExportOptions options = ExportOptions::defaultOptions();
  options.includedKinds = {MediaKind::videos, MediaKind::stickers, MediaKind::documents};
  run(options);
  EXPECT_THAT(absences(), UnorderedElementsAre("1 photo of “Ana” is not in the archive. Export again.",
                                               "1 voice note of “Us” is not in the archive. Export again."));
}

TEST_P(BackupVerificationTest, TellsChatsThatWereLeftOut) {
  scene.runPart({.chats = {"Ana"}}, ExportOptions::defaultOptions());
  EXPECT_THAT(absences(), UnorderedElementsAre("1 voice note of “Us” is not in the archive. Export again.",
                                               "1 message of “Us” is not in the archive. Export again.",
                                               "1 sticker of “Bea” is not in the archive. Export again.",
                                               "1 document of “Bea” is not in the archive. Export again.",
                                               "1 message of “Bea” is not in the archive. Export again."));
}

TEST_P(BackupVerificationTest, TellsMessagesOfAnExportOfTheMediaAlone) {
  run(ExportTest::mediaAlone());
  EXPECT_THAT(absences(), UnorderedElementsAre("2 messages of “Ana” are not in the archive. Export again.",
                                               "1 message of “Us” is not in the archive. Export again.",
                                               "1 message of “Bea” is not in the archive. Export again."));
}

TEST_P(BackupVerificationTest, AnOlderBackupIsAllThereWhenThePhoneHasLostOfIt) {
  const Fixture::WhatsAppContents before = app();
  run();
  app().messages.erase(app().messages.begin());
  app().mediaFiles.erase(app().mediaFiles.begin());
  scene.write();
  run();
  EXPECT_THAT(absences(), IsEmpty());
  app() = before;
  scene.write();
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_P(BackupVerificationTest, TellsAFileThatHasAnotherLengthInTheBackup) {
  run();
  app().mediaFiles[0].content = Fixture::bytesOf("another photo");
  scene.write();
  EXPECT_THAT(absences(), ElementsAre(testing::EndsWith(
                              "aa1.jpg” has 7 bytes, and 13 in the backup. Export again: the backup’s is put beside "
                              "it.")));
  run();
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_P(BackupVerificationTest, AFileThatIsMissingIsFoundOnce) {
  run();
  fs::remove(exported("aa1.jpg"));
  const auto findings = verify().findings;
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].kind, Kind::missing);
}

// The export knows that it lost the file, and this backup could bring it back.
TEST_P(BackupVerificationTest, TellsAFileThatWasLostLongAgo) {
  run();
  const Fixture::WhatsAppContents before = app();
  const std::string photo = textOf(exported("aa1.jpg"));
  const fs::path place = exported("aa1.jpg");
  fs::remove(place);
  app().mediaFiles.erase(app().mediaFiles.begin());
  scene.write();
  run();
  EXPECT_THAT(absences(), IsEmpty()) << "this backup lacks it, too";
  app() = before;
  scene.write();
  EXPECT_THAT(absences(), ElementsAre("1 photo of “Ana” is not in the archive. Export again."));
  std::ofstream(place) << photo;
  EXPECT_THAT(absences(), IsEmpty()) << "it was put back";
}

TEST_P(BackupVerificationTest, SaysWhatToDoAboutFilesThatTheBackupHasNotWhole) {
  loseStored(0);
  run();
  EXPECT_THAT(absences(), ElementsAre("1 photo of “Ana” is not in the archive. The backup holds no whole file of it. "
                                      "Make a new backup with the iPhone and export that."));
}

TEST_P(BackupVerificationTest, AFileThatTheBackupHasLostAndTheArchiveHasIsNoFinding) {
  run();
  loseStored(0);
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_P(BackupVerificationTest, WritesNothingButDigests) {
  run();
  verify();
  const std::string library = textOf(scene.content / LibraryFile::fileName);
  say(1, 7200, "new");
  app().mediaFiles.push_back(ExportTest::media(bea, "fa6", "jpg", "photo", {}));
  scene.write();
  const auto backup = ExportTest::filesBelow(scene.backup);
  const auto before = ExportTest::filesBelow(scene.destination);
  EXPECT_EQ(absences().size(), 2U);
  EXPECT_EQ(textOf(scene.content / LibraryFile::fileName), library);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
  EXPECT_EQ(ExportTest::filesBelow(scene.backup), backup);
}

TEST_P(BackupVerificationTest, LeavesNoWorkingFolder) {
  const ExportTest::PrivateTemporaryFolder temporary;
  run();
  verify();
  EXPECT_TRUE(temporary.isEmpty());
}

TEST_P(BackupVerificationTest, CanBeCancelledAtEveryQuestion) {
  run();
  int questions = 0;
  verify({.isCancelled = [&] { return ++questions < 0; }});
  for (int last = 1; last < questions; last += 5) {
    int asked = 0;
    EXPECT_THAT([&] { verify({.isCancelled = [&] { return ++asked >= last; }}); },
                failsWith(TidewellError::cancelled()));
  }
}

TEST_P(BackupVerificationTest, TellsItsPhases) {
  run();
  std::vector<ExportProgress::Phase> phases;
  verify({.progress = [&](const ExportProgress& report) {
    if (phases.empty() || phases.back() != report.phase) phases.push_back(report.phase);
    EXPECT_LE(report.completed, report.total);
  }});
  using enum ExportProgress::Phase;
  std::vector<ExportProgress::Phase> expected{preparing, readingChats, verifying, finished};
  if (GetParam()) expected.insert(expected.begin() + 1, unlocking);
  EXPECT_EQ(phases, expected);
}

// All of it would be absent.
TEST_P(BackupVerificationTest, EndsWhenTheBackupIsTakenAway) {
  run();
  const auto takeAway = [&](const ExportProgress& report) {
    if (report.phase == ExportProgress::Phase::verifying) fs::remove_all(scene.backup);
  };
  EXPECT_THAT([&] { verify({.progress = takeAway}); },
              failsWith(TidewellError::ioFailure(
                  "The backup was moved or removed. Put it back or connect its disk again, then try again.")));
}

// A backup that does not know the person's number tells of the chat by another name.
TEST_F(PlainBackupVerificationTest, KnowsAChatByEachOfItsIdentities) {
  app().chats[0].jid = ExportTest::anaLID;
  app().lidPairs = std::vector<Fixture::LidPair>();
  scene.write();
  run();
  const Fixture::WhatsAppContents before = app();
  app().chats[0].jid = ana;
  app().lidPairs = std::vector<Fixture::LidPair>{{.lid = ExportTest::anaLID, .phoneNumber = ana}};
  scene.write();
  EXPECT_THAT(absences(), IsEmpty());
  run();
  EXPECT_THAT(absences(), IsEmpty());
  app() = before;
  scene.write();
  EXPECT_THAT(absences(), IsEmpty());
}

TEST_F(PlainBackupVerificationTest, WantsThePasswordOfAnEncryptedBackup) {
  run();
  scene.contents.encryption = Fixture::Encryption{};
  scene.write();
  const VerifyJob job{.destination = scene.destination, .backup = scene.backup};
  EXPECT_THAT([&] { Verification::run(job); }, failsWith(TidewellError::needsBackupPassword()));
}

TEST_F(PlainBackupVerificationTest, RefusesAnotherOwnersBackup) {
  app().messages.push_back({.chat = 1, .date = firstDate, .toJID = ana, .type = 10});
  scene.write();
  run();
  const std::string library = textOf(scene.content / LibraryFile::fileName);
  app().messages.back().toJID = bea;
  scene.write();
  EXPECT_THAT([&] { verify(); }, failsWith(TidewellError::foreignArchive("+55 11 90000-1111")));
  EXPECT_EQ(textOf(scene.content / LibraryFile::fileName), library) << "no digest was kept";
}

TEST_F(PlainBackupVerificationTest, RefusesABackupWithoutWhatsApp) {
  run();
  app() = {.withChatStorage = false, .withContacts = false};
  scene.write();
  EXPECT_THAT([&] { verify(); },
              failsWith(TidewellError::chatStorageUnreadable("This backup holds no WhatsApp data.")));
}

// It is no fault of the library.
TEST_F(PlainBackupVerificationTest, PassesOnThatTheBackupIsDamaged) {
  run();
  std::ofstream(scene.backup / "Manifest.db", std::ios::binary) << "this is no database at all, whatever it says";
  EXPECT_THROW(verify(), TidewellError);
}

}  // namespace
