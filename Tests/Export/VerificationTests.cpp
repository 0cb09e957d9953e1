#include "TidewellCore/Export/Verification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/SmallVolume.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::textOf;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using Kind = VerifySummary::Kind;

class VerificationTest : public testing::Test {
 protected:
  VerificationTest() { run(); }

  ExportSummary run() const {
    return Exporter().exportBackup({.backup = scene.backup, .destination = scene.destination});
  }
  VerifySummary verify() const { return Verification::run({.destination = scene.destination}); }
  std::vector<VerifySummary::Finding> findings() const { return verify().findings; }

  // A file of the export, by the end of its name.
  fs::path file(const std::string& ending) const {
    for (const auto& entry : fs::recursive_directory_iterator(scene.content)) {
      if (entry.path().filename().string().ends_with(ending)) return entry.path();
    }
    return {};
  }
  fs::path block() const {
    for (const auto& entry : fs::directory_iterator(ChatArchiveWriter::dataFolder(scene.content))) {
      if (entry.path().filename().string().starts_with("block-")) return entry.path();
    }
    return {};
  }
  static void flipBit(const fs::path& path) {
    std::string content = textOf(path);
    content[content.size() / 2] = static_cast<char>(content[content.size() / 2] ^ 1);
    std::ofstream(path, std::ios::binary) << content;
  }
  void execute(const std::string& sql) const {
    const SQLiteDB library((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
    SQLiteTransaction transaction(library);
    library.query(sql, {}, [](const SQLiteRow&) {});
    transaction.commit();
  }

  ExportTest::Scene scene;
};

auto finding(Kind kind, const std::string& place) {
  return AllOf(Field(&VerifySummary::Finding::kind, kind), Field(&VerifySummary::Finding::place, HasSubstr(place)),
               Field(&VerifySummary::Finding::message, HasSubstr(place)));
}

TEST_F(VerificationTest, IsSilentOnWhatIsRight) {
  const VerifySummary first = verify();
  EXPECT_THAT(first.findings, IsEmpty());
  EXPECT_EQ(first.mediaCount, 5);
  EXPECT_EQ(first.chatCount, 3);
  EXPECT_EQ(first.messageCount, 4);
  EXPECT_EQ(first.newDigestCount, 5);
  const VerifySummary second = verify();
  EXPECT_THAT(second.findings, IsEmpty());
  EXPECT_EQ(second.newDigestCount, 0);
}

TEST_F(VerificationTest, ChangesNothingButDigests) {
  const auto before = ExportTest::filesBelow(scene.destination);
  verify();
  const std::string library = textOf(scene.content / LibraryFile::fileName);
  verify();
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
  EXPECT_EQ(textOf(scene.content / LibraryFile::fileName), library);
  run();
  EXPECT_EQ(textOf(scene.content / LibraryFile::fileName), library);
}

TEST_F(VerificationTest, KeepsNoDigestOnADriveThatCanOnlyBeRead) {
  const fs::path place = scene.folder / "drive";
  const Fixture::SmallVolume drive(place, 10'000'000);
  if (!drive.isMounted()) GTEST_SKIP() << "This user may not mount a volume.";
  fs::copy(scene.destination, place / "out", fs::copy_options::recursive);
  ASSERT_TRUE(drive.protect());
  const VerifySummary summary = Verification::run({.destination = place / "out"});
  EXPECT_THAT(summary.findings, IsEmpty());
  EXPECT_EQ(summary.mediaCount, 5);
  EXPECT_EQ(summary.newDigestCount, 0);
}

// A full disk can end it there.
TEST_F(VerificationTest, FindsAnExportThatNeverToldItsLibraryAnything) {
  fs::remove(scene.content / LibraryFile::fileName);
  LibraryFile::open(scene.content);
  const auto found = findings();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].kind, Kind::unfinished);
  EXPECT_EQ(found[0].message, "This export was not finished. Export again.");
}

TEST_F(VerificationTest, FindsAFlippedBitInAPhoto) {
  verify();
  flipBit(file("aa1.jpg"));
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::changed, "aa1.jpg")));
  fs::remove(file("aa1.jpg"));
  run();
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerificationTest, FindsAMissingVideo) {
  fs::remove(file("ab2.mp4"));
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::missing, "ab2.mp4")));
  run();
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerificationTest, FindsAFileOfAnotherLength) {
  fs::resize_file(file("da4.webp"), 3);
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::changed, "da4.webp")));
}

TEST_F(VerificationTest, FindsACutChatFile) {
  const fs::path chat = file("s.whatsapp.net.js");
  fs::resize_file(chat, fs::file_size(chat) / 2);
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::changed, chat.filename().string())));
  run();
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerificationTest, FindsAPageOfOtherWords) {
  flipBit(scene.content / "Bea" / FolderNames::htmlTranscript);
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::changed, "Bea")));
}

TEST_F(VerificationTest, FindsABlockOfAnotherArchive) {
  ExportTest::Scene other;
  other.contents.whatsApp.messages[0].text = "another archive's";
  other.write();
  Exporter().exportBackup({.backup = other.backup, .destination = other.destination});
  for (const auto& entry : fs::directory_iterator(ChatArchiveWriter::dataFolder(other.content))) {
    if (!entry.path().filename().string().starts_with("block-")) continue;
    fs::copy_file(entry.path(), block(), fs::copy_options::overwrite_existing);
  }
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::changed, "block-")));
}

TEST_F(VerificationTest, FindsARowThatTheLibraryLost) {
  execute("DELETE FROM message WHERE chat = (SELECT id FROM chat WHERE name = 'Ana') AND key = 1");
  const auto found = findings();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].kind, Kind::library);
  EXPECT_THAT(found[0].message, HasSubstr("tell 2 messages, and the library 1. The library"));
  EXPECT_THAT(run().warnings,
              ElementsAre(testing::AllOf(HasSubstr("has been set aside"), testing::Not(HasSubstr(".tidewell-")))));
  EXPECT_THAT(findings(), IsEmpty());
}

// The pages are the way back, so none is made of what is left.
TEST_F(VerificationTest, PagesGiveBackARowThatTheLibraryAloneHadAndLost) {
  scene.contents.whatsApp.messages.push_back({.chat = 1, .date = ExportTest::firstDate + 60, .text = "once said"});
  scene.write();
  run();
  scene.contents.whatsApp.messages.back().text = "later said";
  scene.contents.whatsApp.messages.back().pk = 99;
  scene.write();
  execute("DELETE FROM message WHERE text = 'once said'");
  EXPECT_THAT(run().warnings, ElementsAre(HasSubstr("has been set aside")));
  EXPECT_THAT(ExportTest::textOf(scene.content / "Ana/_transcript.txt"),
              testing::AllOf(HasSubstr("once said"), HasSubstr("later said")));
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerificationTest, FindsADamagedLibrary) {
  const fs::path library = scene.content / LibraryFile::fileName;
  std::fstream(library, std::ios::in | std::ios::out | std::ios::binary).seekp(100).write("#########", 9);
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::library, LibraryFile::fileName)));
}

TEST_F(VerificationTest, FindsAChatListThatLacksAChat) {
  const fs::path list = ChatArchiveWriter::dataFolder(scene.content) / FolderNames::archiveChats;
  std::string text = textOf(list);
  text.replace(text.find("5511900002222_s"), 1, "6");
  std::ofstream(list, std::ios::binary) << text;
  EXPECT_THAT(findings(), ElementsAre(finding(Kind::changed, FolderNames::archiveChats)));
  run();
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerificationTest, FindsPagesThatWereNotFinished) {
  execute("UPDATE chat SET changed = changed + 1 WHERE id = 1");
  const auto found = findings();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].kind, Kind::unfinished);
  run();
  EXPECT_THAT(findings(), IsEmpty());
}

TEST_F(VerificationTest, AFileThatTheBackupLostLongAgoIsNoFinding) {
  fs::remove(file("aa1.jpg"));
  scene.contents.whatsApp.mediaFiles.erase(scene.contents.whatsApp.mediaFiles.begin());
  scene.write();
  run();
  EXPECT_THAT(findings(), IsEmpty());
}

TEST(Verification, AnExportOfTheMediaAloneIsRightWithoutPages) {
  const ExportTest::Scene scene;
  scene.run();
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
}

TEST_F(VerificationTest, CanBeCancelledAndKeepsWhatItFound) {
  int asked = 0;
  EXPECT_THROW(Verification::run({.destination = scene.destination}, {.isCancelled = [&] { return ++asked > 6; }}),
               TidewellError);
  const VerifySummary after = verify();
  EXPECT_GT(after.newDigestCount, 0);
  EXPECT_LT(after.newDigestCount, 5);
}

TEST_F(VerificationTest, TellsHowFarItIs) {
  std::vector<ExportProgress> reports;
  Verification::run({.destination = scene.destination},
                    {.progress = [&](const ExportProgress& report) { reports.push_back(report); }});
  EXPECT_EQ(reports.front().phase, ExportProgress::Phase::verifying);
  EXPECT_GT(reports.front().total, 5);
  EXPECT_EQ(reports.back().phase, ExportProgress::Phase::finished);
}

TEST(Verification, OfAFolderWithoutAnExportIsRefused) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_THROW(Verification::run({.destination = folder.path()}), TidewellError);
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_THROW(Verification::run({.destination = folder / "nowhere"}), TidewellError);
}

}  // namespace
