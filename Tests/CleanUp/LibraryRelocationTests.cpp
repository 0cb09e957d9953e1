#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Library/MediaLedger.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::everything;
using ExportTest::firstDate;
using ExportTest::media;
using ExportTest::Scene;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A phone that knows Ana under two identities and does not tell that they are one, so that she gets two folders.
Fixture::BackupContents twoIdentities() {
  Fixture::BackupContents contents = ExportTest::talkingBackup();
  auto& app = contents.whatsApp;
  app.chats.push_back({.jid = anaLID, .name = "Ana"});
  app.messages.push_back({.chat = 4, .date = firstDate, .text = "the same"});
  app.messages.push_back({.chat = 4, .date = firstDate + 1.25, .text = "another of one name"});
  app.messages.push_back({.chat = 4, .date = firstDate + 90, .text = "to be gone"});
  app.mediaFiles.push_back(media(anaLID, "aa1", "jpg", "a photo", 5));
  app.mediaFiles.push_back(media(anaLID, "ab2", "mp4", "a video of another length", 6));
  app.mediaFiles.push_back(media(anaLID, "fa7", "jpg", "known to her other identity", 7));
  return contents;
}

struct LibraryRelocationTest : testing::Test {
  LibraryRelocationTest() { build(); }

  // Two exported folders of what is known to be one chat; "Ana" goes into "Ana-2".
  void build() const {
    fs::remove_all(scene.destination);
    scene.run(everything);
    FolderManifest::save(scene.content, {{ana, folderOf(ana)}, {anaLID, folderOf(ana)}});
  }
  std::string folderOf(const std::string& jid) const {
    std::string folder;
    for (const KeptMedium& medium : ledger()) {
      if (medium.chatJID == jid) folder = medium.place->folder;
    }
    return folder;
  }

  DedupeSummary dedupe(const CancellationCheck& isCancelled = {}) const {
    return Exporter().dedupe(scene.destination, true, isCancelled);
  }
  std::vector<KeptMedium> ledger() const {
    const auto file = LibraryFile::openIfThere(scene.content);
    if (!file) return {};
    const MediaLedger ledger(file->database());
    return {ledger.media().begin(), ledger.media().end()};
  }
  // Where the files of Ana's identities stand, by the phone's names of them, as the library knows it.
  std::map<std::string, std::string> placesOf(const std::string& jid) const {
    std::map<std::string, std::string> places;
    for (const KeptMedium& medium : ledger()) {
      if (medium.path.find(jid) == std::string::npos) continue;
      places.emplace(fs::path(medium.path).filename(), medium.place->relativePath());
    }
    return places;
  }
  void expectLedgerThatLeadsToFiles() const {
    const std::vector<KeptMedium> media = ledger();
    EXPECT_THAT(media, testing::SizeIs(8));
    for (const KeptMedium& medium : media) {
      const fs::path file = medium.place->in(scene.content);
      EXPECT_TRUE(fs::is_regular_file(file)) << medium.path << " at " << file;
      EXPECT_EQ(static_cast<std::int64_t>(ExportTest::textOf(file).size()), medium.size) << file;
    }
  }
  // The phone tells now that Ana is one, and lacks a message and its file.
  void loseAMessage() {
    auto& app = scene.contents.whatsApp;
    app.lidPairs = {{.lid = anaLID, .phoneNumber = ana.substr(0, ana.find('@'))}};
    app.messages.pop_back();
    app.mediaFiles.pop_back();
    scene.write();
  }
  // Ends like a crash the `count`th time that the run asks. Tells whether it came so far.
  bool crash(int count) const {
    const pid_t child = ::fork();
    if (child == 0) {
      int asked = 0;
      dedupe([&] {
        if (++asked == count) ::_exit(7);
        return false;
      });
      ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) && WEXITSTATUS(status) == 7;
  }

  Scene scene{twoIdentities()};
  fs::path library = scene.content / LibraryFile::fileName;
};

TEST_F(LibraryRelocationTest, FollowsEachFileAndBothTwinsToTheOneThatStays) {
  ASSERT_EQ(folderOf(anaLID), "Ana");
  ASSERT_EQ(folderOf(ana), "Ana-2");
  dedupe();
  EXPECT_FALSE(fs::exists(scene.content / "Ana"));
  expectLedgerThatLeadsToFiles();
  const auto one = placesOf(ana);
  const auto other = placesOf(anaLID);
  EXPECT_EQ(other.at("aa1.jpg"), one.at("aa1.jpg"));
  EXPECT_NE(other.at("ab2.mp4"), one.at("ab2.mp4"));
  EXPECT_THAT(other.at("fa7.jpg"), testing::StartsWith("Ana-2/"));
}

TEST_F(LibraryRelocationTest, TheNextExportCopiesNothingAndLinksWhatIsGone) {
  dedupe();
  loseAMessage();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  expectLedgerThatLeadsToFiles();
  ExportTest::expectWholeArchive(scene.destination);
  std::vector<std::string> links;
  for (const Json::Object& message : ExportTest::messagesOf(scene.content, "Ana")) {
    if (ExportTest::textIn(message, "text") == "to be gone") {
      links.push_back(ExportTest::textIn(ExportTest::mediumOf(message), "path"));
    }
  }
  EXPECT_THAT(links, ElementsAre(placesOf(anaLID).at("fa7.jpg")));
}

TEST_F(LibraryRelocationTest, AnExportThatMovesWhatBothTwinsAreTellsBoth) {
  dedupe();
  loseAMessage();
  FolderManifest::save(scene.content, {{ana, "Ana"}, {anaLID, "Ana-2"}});
  scene.run(everything);
  EXPECT_THAT(placesOf(ana).at("aa1.jpg"), testing::StartsWith("Ana/"));
  EXPECT_EQ(placesOf(anaLID).at("aa1.jpg"), placesOf(ana).at("aa1.jpg"));
  expectLedgerThatLeadsToFiles();
  EXPECT_EQ(scene.run(everything).copiedCount, 0);
}

TEST_F(LibraryRelocationTest, WhatHasNotMovedLeavesTheLibraryAsItIs) {
  dedupe();
  const std::string before = ExportTest::textOf(library);
  fs::create_directory(scene.content / ana);
  Fixture::writeFile(scene.content / ana / "nobody knows.txt", "it");
  EXPECT_EQ(dedupe().movedUniqueCount, 1);
  EXPECT_EQ(ExportTest::textOf(library), before);
}

TEST_F(LibraryRelocationTest, MakesNoLibraryWhereThereIsNone) {
  fs::remove(library);
  const DedupeSummary summary = dedupe();
  EXPECT_EQ(summary.removedFolderCount, 1);
  EXPECT_THAT(summary.warnings, IsEmpty());
  EXPECT_FALSE(fs::exists(library));
}

TEST_F(LibraryRelocationTest, LeavesADamagedLibraryAsItIsAndSaysSo) {
  fs::resize_file(library, 5000);
  const std::string before = ExportTest::textOf(library);
  const DedupeSummary summary = dedupe();
  EXPECT_EQ(summary.removedFolderCount, 1);
  EXPECT_TRUE(summary.archiveUpdated);
  EXPECT_THAT(summary.warnings, ElementsAre(HasSubstr("is damaged")));
  EXPECT_EQ(ExportTest::textOf(library), before);
  EXPECT_FALSE(fs::exists(scene.content / ".tidewell-dedupe.json"));
}

TEST_F(LibraryRelocationTest, LeavesALaterVersionsLibraryAsItIsAndSaysSo) {
  SQLiteDB(library.string(), SQLiteDB::OpenMode::create).query("PRAGMA user_version = 99", {}, [](const SQLiteRow&) {});
  const std::string before = ExportTest::textOf(library);
  const DedupeSummary summary = dedupe();
  EXPECT_EQ(summary.removedFolderCount, 1);
  EXPECT_THAT(summary.warnings, ElementsAre(HasSubstr("newer version")));
  EXPECT_EQ(ExportTest::textOf(library), before);
}

TEST_F(LibraryRelocationTest, AnInterruptedCleanUpEndsInTheSameLedger) {
  dedupe();
  expectLedgerThatLeadsToFiles();
  const std::vector<KeptMedium> expected = ledger();
  int count = 1;
  for (build(); crash(count); build(), ++count) {
    dedupe();
    ASSERT_EQ(ledger(), expected) << count;
  }
  EXPECT_GT(count, 6) << "every step of the merge was interrupted";
}

TEST_F(LibraryRelocationTest, FollowsLaterWhereItCouldNotBeWritten) {
  dedupe();
  const std::vector<KeptMedium> expected = ledger();
  build();
  const std::vector<KeptMedium> before = ledger();
  // Where the journal of a change would stand.
  const fs::path obstacle = scene.content / LibraryFile::journalName;
  fs::create_directory(obstacle);
  EXPECT_THROW(dedupe(), TidewellError);
  fs::remove(obstacle);
  EXPECT_EQ(ledger(), before);
  EXPECT_FALSE(fs::exists(scene.content / "Ana")) << "all else was done";
  dedupe();
  EXPECT_EQ(ledger(), expected);
}

}  // namespace
