#include "TidewellCore/Export/Rerendering.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::everything;
using ExportTest::filesBelow;
using ExportTest::firstDate;
using ExportTest::textOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// An export whose backup is gone.
class RerenderingTest : public testing::Test {
 protected:
  RerenderingTest() { save(); }

  // Of the phone as `contents` has it now.
  void save(const Exporter& exporter = {}, const ExportOptions& options = everything) {
    scene.write();
    exporter.exportBackup({.backup = scene.backup, .destination = scene.destination, .options = options});
    fs::remove_all(scene.backup);
  }
  RenderSummary render(const RunControl& control = {}) const {
    return Rerendering::run({.destination = scene.destination}, control);
  }
  std::map<std::string, Fixture::TreeEntry> tree() const { return Fixture::treeSnapshot(scene.destination); }

  fs::path dataFolder() const { return ChatArchiveWriter::dataFolder(scene.content); }
  static std::vector<fs::path> filesIn(const fs::path& folder, const std::string& beginning) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path().filename().string().starts_with(beginning)) files.push_back(entry.path());
    }
    return files;
  }
  // All that is made from the library.
  std::vector<fs::path> pages() const {
    std::vector<fs::path> pages{scene.destination / FolderNames::archivePage};
    for (const char* folder : {"Ana", "Bea", "Us"}) {
      for (const fs::path& page : filesIn(scene.content / folder, "_")) pages.push_back(page);
    }
    for (const fs::path& file : filesIn(dataFolder(), "")) pages.push_back(file);
    for (const fs::path& file : filesIn(scene.content / FolderNames::viewer, "app")) pages.push_back(file);
    return pages;
  }
  // Leaves it as long as it was.
  static void flipBit(const fs::path& file) {
    std::string content = textOf(file);
    content[content.size() / 2] = static_cast<char>(content[content.size() / 2] ^ 1);
    std::ofstream(file, std::ios::binary) << content;
  }

  ExportTest::Scene scene{ExportTest::talkingBackup()};
};

auto failsAs(const std::string& words) {
  return testing::Throws<TidewellError>(testing::Property(&TidewellError::errorDescription, HasSubstr(words)));
}

TEST_F(RerenderingTest, LeavesThePagesOfALibraryThatLostMessages) {
  SQLiteDB((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept)
      .forEachRow("DELETE FROM message", [](const SQLiteRowView&) {});
  const auto before = tree();
  EXPECT_THROW(render(), TidewellError);
  EXPECT_EQ(tree(), before);
}

TEST_F(RerenderingTest, ChangesNoByteAndNoDateWhereAllIsRight) {
  const auto before = tree();
  const RenderSummary summary = render();
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(summary.chatCount, 3);
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(summary.archiveIndexURL, scene.destination / "index.html");
  EXPECT_THAT(summary.failures, IsEmpty());
}

TEST_F(RerenderingTest, NorDoesItAfterSeveralExports) {
  scene.contents.whatsApp.messages.push_back({.chat = 3, .date = firstDate + 7200, .text = "good night"});
  save();
  scene.contents.whatsApp.messages.erase(scene.contents.whatsApp.messages.begin());
  scene.contents.whatsApp.chats[0].name = "Ana Maria";
  save();
  const auto before = tree();
  render();
  EXPECT_EQ(tree(), before);
}

TEST_F(RerenderingTest, MakesPagesThatWereDeleted) {
  save({}, {.includedKinds = everything.includedKinds, .exportTranscripts = true, .formats = {MessageFormat::json}});
  const auto before = filesBelow(scene.destination);
  for (const fs::path& page : pages()) fs::remove(page);
  fs::remove_all(scene.content / FolderNames::viewer);
  EXPECT_EQ(render().transcriptCount, 9);
  EXPECT_EQ(filesBelow(scene.destination), before);
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
  const auto whole = tree();
  render();
  EXPECT_EQ(tree(), whole);
}

TEST_F(RerenderingTest, MakesPagesThatWereChangedAndLeftAsLongAsTheyWere) {
  const auto before = filesBelow(scene.destination);
  ASSERT_GE(pages().size(), 13U);
  for (const fs::path& page : pages()) {
    flipBit(page);
    ASSERT_NE(filesBelow(scene.destination), before) << page;
    render();
    ASSERT_EQ(filesBelow(scene.destination), before) << page;
  }
}

TEST_F(RerenderingTest, MakesABlockThatAnotherArchivesTookThePlaceOf) {
  const auto before = filesBelow(scene.destination);
  ExportTest::Scene other(ExportTest::talkingBackup());
  other.contents.whatsApp.messages[0].text = "another archive's";
  other.write();
  other.run(everything);
  for (const fs::path& block : filesIn(ChatArchiveWriter::dataFolder(other.content), "block-")) {
    fs::copy_file(block, dataFolder() / block.filename());
    fs::copy_file(block, filesIn(dataFolder(), "block-").at(0), fs::copy_options::overwrite_existing);
  }
  render();
  EXPECT_EQ(filesBelow(scene.destination), before);
}

TEST_F(RerenderingTest, LeavesMediaAndSomebodysFilesAlone) {
  std::ofstream(scene.content / "Ana" / "my notes.txt") << "mine";
  std::ofstream(scene.destination / "letter.txt") << "mine";
  const auto before = tree();
  for (const fs::path& page : pages()) fs::remove(page);
  render();
  const auto after = tree();
  for (const auto& [path, entry] : before) {
    const bool isMade = path.find("_viewer") != std::string::npos || path.find("/_") != std::string::npos ||
                        path == FolderNames::archivePage;
    if (isMade || fs::is_directory(scene.destination / path)) continue;
    ASSERT_TRUE(after.contains(path)) << path;
    EXPECT_EQ(after.at(path), entry) << path;
  }
  EXPECT_EQ(after.size(), before.size());
}

TEST_F(RerenderingTest, AddsTheFormatsThatAreAskedFor) {
  const RenderJob job{.destination = scene.destination, .formats = {MessageFormat::csv}};
  EXPECT_EQ(Rerendering::run(job).transcriptCount, 9);
  EXPECT_TRUE(fs::exists(scene.content / "Ana" / FolderNames::csvMessages));
  EXPECT_FALSE(fs::exists(scene.content / "Ana" / FolderNames::jsonMessages));
  EXPECT_EQ(render().transcriptCount, 9) << "they stand from now on";
}

// The library need not know of them.
TEST_F(RerenderingTest, BringsFilesForProgramsUpToDateThatStand) {
  Fixture::writeFile(scene.content / "Ana" / FolderNames::csvMessages, Fixture::bytesOf("of an earlier day"));
  EXPECT_EQ(render().transcriptCount, 9);
  EXPECT_THAT(textOf(scene.content / "Ana" / FolderNames::csvMessages), HasSubstr("text 1"));
}

TEST_F(RerenderingTest, SpeaksAsTheLastExportDidThoughThatToldNothingNew) {
  save({.timeZone = {.identifier = "Asia/Tokyo"},
        .locale = {.identifier = "pt_BR"},
        .transcriptStyle = TranscriptStyle::portuguese()});
  ASSERT_THAT(textOf(scene.content / "Ana" / FolderNames::textTranscript), HasSubstr("05:26:41] Você"));
  const auto before = tree();
  render();
  EXPECT_EQ(tree(), before);
}

TEST_F(RerenderingTest, SpeaksAsIsAskedFor) {
  const auto before = filesBelow(scene.destination);
  Rerendering::run({.destination = scene.destination,
                    .timeZone = TimeZone{.identifier = "Asia/Tokyo"},
                    .locale = Locale{.identifier = "pt_BR"}});
  EXPECT_THAT(textOf(scene.content / "Ana" / FolderNames::textTranscript), HasSubstr("05:26:41] Você"));
  render();
  EXPECT_EQ(filesBelow(scene.destination), before) << "the library's last export has not changed";
}

TEST_F(RerenderingTest, LeavesOutPicturesThatAreGone) {
  fs::remove_all(scene.content / FolderNames::avatars);
  render();
  EXPECT_FALSE(ExportTest::listedChat(scene.content, "Ana").contains("avatar"));
  ExportTest::expectWholeArchive(scene.destination);
}

TEST_F(RerenderingTest, GivesAChatWithoutAFolderItsArchivePageAlone) {
  const auto before = filesBelow(scene.content / "Ana");
  fs::remove(scene.content / FolderManifest::fileName);
  fs::remove(scene.content / FolderNames::viewer / FolderManifest::viewerFileName);
  const RenderSummary summary = render();
  EXPECT_EQ(summary.transcriptCount, 0);
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(filesBelow(scene.content / "Ana"), before);
  ExportTest::expectWholeArchive(scene.destination);
}

TEST_F(RerenderingTest, OnePageThatCannotBeWrittenIsToldAndTheRestIsMade) {
  const fs::path page = scene.content / "Ana" / FolderNames::htmlTranscript;
  fs::remove(page);
  fs::create_directories(page / "somebody's");
  fs::remove(scene.content / "Bea" / FolderNames::htmlTranscript);
  const RenderSummary summary = render();
  EXPECT_EQ(summary.failedCount, 1);
  ASSERT_EQ(summary.failures.size(), 1U);
  EXPECT_EQ(summary.failures[0].name, FolderNames::htmlTranscript);
  EXPECT_EQ(summary.failures[0].chat, "Ana");
  EXPECT_EQ(summary.transcriptCount, 5);
  EXPECT_TRUE(fs::exists(scene.content / "Bea" / FolderNames::htmlTranscript));
}

TEST_F(RerenderingTest, WhatACancelledRunLeftIsMadeByTheNext) {
  const auto before = filesBelow(scene.destination);
  for (const fs::path& page : pages()) fs::remove(page);
  int asked = 0;
  EXPECT_THAT([&] { render({.isCancelled = [&] { return ++asked > 2; }}); },
              testing::Throws<TidewellError>(testing::Truly(TidewellError::isCancellation)));
  EXPECT_NE(filesBelow(scene.destination), before);
  std::ofstream(scene.content / "Ana" / (std::string(Files::partialPrefix) + "x")) << "half";
  render();
  EXPECT_EQ(filesBelow(scene.destination), before);
}

TEST_F(RerenderingTest, WaitsForNoOtherRun) {
  const auto before = tree();
  const DestinationLock lock(scene.destination);
  fs::remove(scene.destination / FolderNames::archivePage);
  EXPECT_THAT([&] { render(); }, failsAs("Another export"));
  EXPECT_FALSE(fs::exists(scene.destination / FolderNames::archivePage));
}

TEST_F(RerenderingTest, SaysWhatToDoWithoutALibrary) {
  ExportTest::forgetLibrary(scene.destination);
  const auto before = tree();
  EXPECT_THAT([&] { render(); }, failsAs("holds no library"));
  EXPECT_EQ(tree(), before);
}

TEST_F(RerenderingTest, SetsNoDamagedLibraryAside) {
  const fs::path library = scene.content / LibraryFile::fileName;
  for (const std::int64_t place : {100, 0}) {
    std::fstream(library, std::ios::in | std::ios::out | std::ios::binary).seekp(place).write("#########", 9);
    const auto before = tree();
    EXPECT_THAT([&] { render(); }, failsAs("is damaged. Export again"));
    EXPECT_EQ(tree(), before);
  }
}

TEST(Rerendering, OfAnExportOfTheMediaAloneIsRefused) {
  const ExportTest::Scene scene;
  scene.run();
  const auto before = Fixture::treeSnapshot(scene.destination);
  EXPECT_THAT([&] { Rerendering::run({.destination = scene.destination}); }, failsAs("knows no chats"));
  EXPECT_EQ(Fixture::treeSnapshot(scene.destination), before);
}

TEST(Rerendering, OfAFolderWithoutAnExportIsRefused) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_THAT([&] { Rerendering::run({.destination = folder.path()}); }, failsAs("holds no library"));
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_THAT([&] { Rerendering::run({.destination = folder / "nowhere"}); }, failsAs("no export"));
  EXPECT_FALSE(fs::exists(folder / "nowhere"));
}

TEST_F(RerenderingTest, WritesIntoNoBackup) {
  fs::rename(scene.content, scene.destination / "kept");
  scene.write();
  fs::rename(scene.destination / "kept", scene.backup / "messages");
  const auto before = Fixture::treeSnapshot(scene.backup);
  EXPECT_THROW(Rerendering::run({.destination = scene.backup}), TidewellError);
  EXPECT_EQ(Fixture::treeSnapshot(scene.backup), before);
}

TEST_F(RerenderingTest, KnowsTheExportByItsOwnFolderWhoseViewerIsGone) {
  const auto before = filesBelow(scene.destination);
  fs::remove_all(scene.content / FolderNames::viewer);
  fs::remove(scene.destination / FolderNames::archivePage);
  Rerendering::run({.destination = scene.content});
  EXPECT_EQ(filesBelow(scene.destination), before);
}

TEST_F(RerenderingTest, MakesThePagesOfAContentRootThatStandsAlone) {
  fs::rename(scene.content, scene.folder / "Chats");
  fs::remove(scene.folder / "Chats" / "Ana" / FolderNames::htmlTranscript);
  EXPECT_EQ(Rerendering::run({.destination = scene.folder / "Chats"}).transcriptCount, 6);
  EXPECT_TRUE(fs::exists(scene.folder / "Chats" / "Ana" / FolderNames::htmlTranscript));
  ExportTest::expectWholeArchive(scene.folder / "Chats");
}

TEST_F(RerenderingTest, TellsHowFarItIs) {
  std::vector<ExportProgress::Phase> phases;
  render({.progress = [&](const ExportProgress& report) {
    if (phases.empty() || phases.back() != report.phase) phases.push_back(report.phase);
  }});
  using enum ExportProgress::Phase;
  EXPECT_THAT(phases, testing::ElementsAre(preparing, writingTranscripts, finished));
}

}  // namespace
