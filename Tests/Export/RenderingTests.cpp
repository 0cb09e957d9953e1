#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Library/LibraryRows.h"
#include "TidewellCore/Archive/MessageFiles.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Library/Renderings.h"
#include "TidewellCore/TidewellError.h"

// Which pages an export makes anew. A mark in a page, which leaves it as long as it was, is gone when it was.

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::firstDate;
using ExportTest::textOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char mark = '#';

class RenderingTest : public testing::Test {
 protected:
  RenderingTest() { run(); }

  ExportSummary run(const Exporter& exporter = {}) {
    ExportTest::forgetReceipt(scene.destination);
    return exporter.exportBackup({.backup = scene.backup, .destination = scene.destination});
  }
  // The phone of a later day, with what `contents` holds now.
  ExportSummary runAgain() {
    scene.write();
    return run();
  }

  fs::path transcriptOf(const std::string& folder) const {
    return scene.content / folder / FolderNames::textTranscript;
  }
  fs::path dataFolder() const { return scene.content / FolderNames::viewer / FolderNames::viewerData; }
  std::vector<fs::path> dataFiles(const std::string& beginning) const {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(dataFolder())) {
      if (entry.path().filename().string().starts_with(beginning)) files.push_back(entry.path());
    }
    return files;
  }

  static void setMark(const fs::path& page) {
    std::fstream file(page, std::ios::in | std::ios::out | std::ios::binary);
    file.put(mark);
  }
  static bool hasMark(const fs::path& page) { return textOf(page).front() == mark; }

  ExportTest::Scene scene;
};

TEST_F(RenderingTest, OneThatStandsIsLeftAlone) {
  setMark(transcriptOf("Ana"));
  const auto before = ExportTest::filesBelow(scene.destination);
  const std::string library = textOf(scene.content / LibraryFile::fileName);
  const ExportSummary summary = run();
  EXPECT_EQ(summary.transcriptCount, 6);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
  EXPECT_EQ(textOf(scene.content / LibraryFile::fileName), library);
}

TEST_F(RenderingTest, ANewMessageMakesThePagesOfItsChatAlone) {
  setMark(transcriptOf("Ana"));
  setMark(transcriptOf("Bea"));
  scene.contents.whatsApp.messages.push_back({.chat = 3, .date = firstDate + 7200, .text = "good night"});
  runAgain();
  EXPECT_TRUE(hasMark(transcriptOf("Ana")));
  EXPECT_THAT(textOf(transcriptOf("Bea")), testing::AllOf(StartsWith("==="), HasSubstr("good night")));
  EXPECT_THAT(textOf(dataFolder() / FolderNames::archiveChats), HasSubstr("good night"));
  EXPECT_THAT(textOf(dataFiles("block-").at(0)), HasSubstr("good night"));
}

TEST_F(RenderingTest, WhatIsMissingOrCutIsMadeAgain) {
  const auto before = ExportTest::filesBelow(scene.destination);
  fs::remove(transcriptOf("Ana"));
  fs::resize_file(scene.content / "Bea" / FolderNames::htmlTranscript, 7);
  fs::remove(dataFiles("chat-").at(0));
  fs::resize_file(dataFiles("block-").at(0), 9);
  run();
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST_F(RenderingTest, AMissingBlockIsMadeAgainWithoutItsChats) {
  setMark(transcriptOf("Ana"));
  const auto before = ExportTest::filesBelow(scene.destination);
  fs::remove(dataFiles("block-").at(0));
  run();
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST_F(RenderingTest, AnotherZoneMakesAllPages) {
  setMark(transcriptOf("Ana"));
  setMark(transcriptOf("Bea"));
  run({.timeZone = {.identifier = "Asia/Tokyo"}});
  EXPECT_FALSE(hasMark(transcriptOf("Ana")));
  EXPECT_FALSE(hasMark(transcriptOf("Bea")));
}

// Times in two zones may be equally long.
TEST_F(RenderingTest, AChangeOfTheZoneThatWasBrokenOffLeavesNoPagesInTwo) {
  const auto before = ExportTest::filesBelow(scene.destination);
  const Exporter azores{.timeZone = TimeZone{"Atlantic/Azores"}};
  bool isDone = false;
  bool wasHalfDone = false;
  for (int patience = 0; !isDone; ++patience) {
    bool isWriting = false;
    int asked = 0;
    const RunControl control{.progress =
                                 [&](const ExportProgress& progress) {
                                   isWriting |= progress.phase == ExportProgress::Phase::writingTranscripts;
                                 },
                             .isCancelled = [&] { return isWriting && ++asked > patience; }};
    try {
      azores.exportBackup({.backup = scene.backup, .destination = scene.destination}, control);
      isDone = true;
    } catch (const TidewellError&) {
      wasHalfDone |= ExportTest::filesBelow(scene.destination) != before;
    }
    run();
    ASSERT_EQ(ExportTest::filesBelow(scene.destination), before) << patience;
  }
  EXPECT_TRUE(wasHalfDone);
}

TEST_F(RenderingTest, AnotherLanguageMakesAllPages) {
  run({.transcriptStyle = TranscriptStyle::portuguese()});
  EXPECT_THAT(textOf(transcriptOf("Ana")), HasSubstr("Você"));
}

// The pages lead to the file, or say that there is none.
TEST_F(RenderingTest, AFileThatIsGoneMakesThePagesOfItsChat) {
  setMark(transcriptOf("Ana"));
  setMark(transcriptOf("Bea"));
  for (const auto& entry : fs::directory_iterator(scene.content / "Ana")) {
    if (entry.path().extension() == ".jpg") fs::remove(entry.path());
  }
  scene.contents.whatsApp.mediaFiles.erase(scene.contents.whatsApp.mediaFiles.begin());
  const ExportSummary summary = runAgain();
  EXPECT_THAT(textOf(transcriptOf("Ana")), testing::AllOf(StartsWith("==="), Not(HasSubstr(".jpg"))));
  EXPECT_TRUE(hasMark(transcriptOf("Bea")));
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 1);
  EXPECT_EQ(run().unresolvedArchiveLinkCount, 1);
}

// It is told by an export that makes no pages, and acted on by the next that does.
TEST_F(RenderingTest, SoDoesOneThatAnExportWithoutTranscriptsMissed) {
  for (int time = 0; time < 2; ++time) {
    fs::path photo;
    for (const auto& entry : fs::directory_iterator(scene.content / "Ana")) {
      if (entry.path().extension() == ".jpg") photo = entry.path();
    }
    const std::string content = textOf(photo);
    const fs::path aside = scene.folder / "aside";
    fs::rename(photo, aside);
    const auto kept = scene.contents.whatsApp.mediaFiles;
    scene.contents.whatsApp.mediaFiles.erase(scene.contents.whatsApp.mediaFiles.begin());
    scene.write();
    scene.run();
    run();
    EXPECT_THAT(textOf(transcriptOf("Ana")), Not(HasSubstr(".jpg"))) << time;
    fs::rename(aside, photo);
    scene.contents.whatsApp.mediaFiles = kept;
    scene.write();
    scene.run();
    run();
    EXPECT_THAT(textOf(transcriptOf("Ana")), HasSubstr(".jpg")) << time;
  }
}

// Files for other programs tell what the other pages do, also after an export that does not ask for them.
TEST_F(RenderingTest, FilesForProgramsThatStandDoNotGrowOld) {
  const Exporter exporter;
  const auto save = [&](MessageFormats formats) {
    return exporter.exportBackup({.backup = scene.backup,
                                  .destination = scene.destination,
                                  .options = {.includedKinds = ExportTest::mediaAlone().includedKinds,
                                              .exportTranscripts = true,
                                              .formats = std::move(formats)}});
  };
  EXPECT_EQ(save({MessageFormat::json}).transcriptCount, 9);
  setMark(transcriptOf("Ana"));
  EXPECT_EQ(save({}).transcriptCount, 9);
  EXPECT_TRUE(hasMark(transcriptOf("Ana"))) << "nothing is made anew";
  EXPECT_EQ(save({MessageFormat::json, MessageFormat::csv}).transcriptCount, 12);
  EXPECT_FALSE(hasMark(transcriptOf("Ana")));
  scene.contents.whatsApp.messages.push_back({.chat = 3, .date = firstDate + 7200, .text = "good night"});
  scene.write();
  save({});
  for (const MessageFormat format : {MessageFormat::json, MessageFormat::csv}) {
    EXPECT_THAT(textOf(scene.content / "Bea" / MessageFiles::nameOf(format)), HasSubstr("good night"));
  }
}

TEST_F(RenderingTest, ARenamedContactMakesTheirPages) {
  scene.contents.whatsApp.chats[0].name = "Ana Maria";
  runAgain();
  EXPECT_THAT(textOf(transcriptOf("Ana")), StartsWith("=== Ana Maria ==="));
}

TEST_F(RenderingTest, WithoutTheMemoryOfItAllPagesComeOutTheSame) {
  scene.contents.whatsApp.messages.push_back({.chat = 1, .date = firstDate + 7200, .text = "good night"});
  runAgain();
  const auto pages = ExportTest::filesBelow(scene.destination);
  {
    const SQLiteDB library((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
    SQLiteTransaction transaction(library);
    Renderings::forget(library);
    transaction.commit();
  }
  setMark(transcriptOf("Bea"));
  run();
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), pages);
}

// Whatever the memory says: no page but the archive's own is looked at or named.
TEST_F(RenderingTest, AMemoryThatLeadsElsewhereIsPassedOver) {
  const auto pages = ExportTest::filesBelow(scene.destination);
  {
    const SQLiteDB library((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
    SQLiteTransaction transaction(library);
    library.query("UPDATE block SET file = '../../chats.js', size = 0", {}, [](const SQLiteRow&) {});
    library.query("UPDATE rendering SET files = '[1', absent = '{\"photos\":\"x\"}'", {}, [](const SQLiteRow&) {});
    transaction.commit();
  }
  run();
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), pages);
}

// A new shelf is the one after the last.
TEST_F(RenderingTest, AMemoryOfNumbersThatNobodyGaveIsPassedOver) {
  const auto pages = ExportTest::filesBelow(scene.destination);
  for (const char* change :
       {"UPDATE rendering SET shelf = 9223372036854775807", "UPDATE rendering SET shelf = -5",
        "UPDATE block SET shelf = 9223372036854775807", "UPDATE rendering SET messages = 9223372036854775807",
        "UPDATE rendering SET messages = -9223372036854775808",
        "UPDATE rendering SET absent = '{\"photos\":9223372036854775807,\"videos\":9223372036854775807}'",
        "UPDATE block SET parts = replace(parts, ',0,', ',9223372036854775807,')"}) {
    {
      const SQLiteDB library((scene.content / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
      SQLiteTransaction transaction(library);
      library.query(change, {}, [](const SQLiteRow&) {});
      transaction.commit();
    }
    EXPECT_GE(run().unresolvedArchiveLinkCount, 0) << change;
    EXPECT_EQ(ExportTest::filesBelow(scene.destination), pages) << change;
    const Renderings kept = Renderings::load(LibraryFile::look(scene.content));
    EXPECT_EQ(kept.chats.size(), 3U) << change;
    for (const auto& [number, chat] : kept.chats) EXPECT_LT(chat.shelf, 10) << change;
    for (const auto& [number, blocks] : kept.shelves) EXPECT_LT(number, 10) << change;
  }
}

}  // namespace
