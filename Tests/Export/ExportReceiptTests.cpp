#include "TidewellCore/Export/ExportReceipt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::Scene;
using ExportTest::smallBackup;
using Phase = ExportProgress::Phase;

struct ExportReceiptTest : testing::TestWithParam<bool> {
  ExportReceiptTest() { settle(); }

  // What was written a moment ago might be written again unseen.
  static void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(60)); }

  ExportSummary run(const Exporter& exporter = {}, const Selection& selection = {}) {
    hasRead = false;
    ExportJob job{.backup = scene.backup, .destination = scene.destination, .selection = selection};
    if (scene.contents.encryption) job.password = scene.contents.encryption->keyBag.password;
    return exporter.exportBackup(job, {.progress = [this](const ExportProgress& progress) {
                                   hasRead |= progress.phase == Phase::readingChats;
                                 }});
  }
  fs::path stored(const std::string& relativePath) const {
    return Fixture::storedPath(scene.backup, Fixture::fileIDOf(scene.contents.whatsApp.domain, relativePath));
  }
  fs::path receipt() const { return scene.content / OwnFiles::receipt; }
  // Its bytes are the same, and so is its length.
  static void touch(const fs::path& file) {
    settle();
    Fixture::writeFile(file, Fixture::readFile(file));
    settle();
  }

  Scene scene{smallBackup(GetParam())};
  bool hasRead = false;  // the last run looked into the backup's databases
};
INSTANTIATE_TEST_SUITE_P(Backups, ExportReceiptTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(ExportReceiptTest, TheSameExportOnceMoreReadsNothingAndTellsTheSame) {
  run();
  EXPECT_TRUE(hasRead);
  ExportTest::forgetReceipt(scene.destination);
  const ExportSummary whole = run();
  EXPECT_TRUE(hasRead);
  EXPECT_FALSE(fs::exists(receipt())) << "it changed nothing";

  fs::remove_all(scene.destination);
  const ExportSummary first = run();
  const auto before = ExportTest::filesBelow(scene.destination);
  const ExportSummary again = run();
  EXPECT_FALSE(hasRead);
  EXPECT_EQ(again, whole);
  EXPECT_EQ(again.skippedExistingCount, first.copiedCount);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST_P(ExportReceiptTest, WhateverChangedIsLookedAt) {
  const std::string medium = "Message/" + scene.contents.whatsApp.mediaFiles[0].localPath;
  const std::map<std::string, std::function<void()>> changes{
      {"the index", [&] { touch(scene.backup / "Manifest.db"); }},
      {"the property lists", [&] { touch(scene.backup / "Info.plist"); }},
      {"the chats", [&] { touch(stored("ChatStorage.sqlite")); }},
      {"the contacts", [&] { touch(stored("ContactsV2.sqlite")); }},
      {"the page", [&] { fs::remove(scene.destination / FolderNames::archivePage); }},
      {"the library", [&] { touch(scene.content / LibraryFile::fileName); }},
      {"a new file", [&] { Fixture::writeFile(scene.content / "note.txt", std::string("mine")); }},
      {"a link", [&] { fs::create_symlink(scene.folder.path(), scene.content / "link"); }},
      {"a lost photo",
       [&] {
         const auto files = ExportTest::filesBelow(scene.content);
         const auto photo = std::ranges::find_if(files, [](const auto& file) { return file.first.ends_with(".jpg"); });
         fs::remove(scene.content / photo->first);
       }},
      {"an unfinished transaction",
       [&] { Fixture::writeFile(scene.content / LibraryFile::journalName, std::string()); }},
  };
  for (const auto& [what, change] : changes) {
    fs::remove_all(scene.destination);
    run();
    run();
    ASSERT_FALSE(hasRead) << what;
    change();
    run();
    EXPECT_TRUE(hasRead) << what;
  }
}

TEST_P(ExportReceiptTest, AnotherWishIsLookedAt) {
  run();
  run({.timeZone = TimeZone{"Asia/Tokyo"}});
  EXPECT_TRUE(hasRead);
  run({.timeZone = TimeZone{"Asia/Tokyo"}});
  EXPECT_FALSE(hasRead);
  run({.timeZone = TimeZone{"Asia/Tokyo"}}, {.since = dayFromISO8601("2020-01-01")});
  EXPECT_TRUE(hasRead);
  run({.timeZone = TimeZone{"Asia/Tokyo"}, .transcriptStyle = TranscriptStyle::portuguese()});
  EXPECT_TRUE(hasRead);
}

TEST_P(ExportReceiptTest, WhatMayBeMissingIsLookedForAgain) {
  fs::remove(stored("Message/" + scene.contents.whatsApp.mediaFiles[0].localPath));
  settle();
  EXPECT_GT(run().failedCount, 0);
  EXPECT_FALSE(fs::exists(receipt()));
  EXPECT_GT(run().failedCount, 0);
}

TEST_P(ExportReceiptTest, ABackupThatIsStillWrittenIsReadAgain) {
  const Date toCome =
      std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now()) + std::chrono::hours(1);
  Files::setModificationDate(stored("ChatStorage.sqlite"), toCome);
  run();
  EXPECT_FALSE(fs::exists(receipt())) << "it may be changed without getting another date";
}

TEST_P(ExportReceiptTest, AWrongPasswordStaysWrong) {
  if (!GetParam()) GTEST_SKIP() << "A plain backup has none.";
  run();
  EXPECT_THROW(Exporter().exportBackup({.backup = scene.backup, .destination = scene.destination, .password = "x"}),
               TidewellError);
}

TEST_P(ExportReceiptTest, AnotherExportThatIsWritingIsNotPassedOver) {
  run();
  const DestinationLock other(scene.destination);
  EXPECT_THROW(run(), TidewellError);
}

TEST_P(ExportReceiptTest, AReceiptThatIsNoneIsPassedOver) {
  for (const char* text : {"", "{}", "[]", "{\"version\": 2}", "{\"version\": 1, \"databases\": [\"../x\", 7]}"}) {
    run();
    Fixture::writeFile(receipt(), std::string(text));
    const ExportSummary summary = run();
    EXPECT_TRUE(hasRead) << text;
    EXPECT_EQ(summary.skippedExistingCount, 5) << text;
    fs::remove_all(scene.destination);
  }
}

// As a sync program leaves it, or somebody who tidies up: without the receipt it would look like a first library.
TEST_P(ExportReceiptTest, ALibraryThatIsGoneOrEmptiedIsToldOnce) {
  for (const bool isEmptied : {false, true}) {
    fs::remove_all(scene.destination);
    run();
    const fs::path library = scene.content / LibraryFile::fileName;
    isEmptied ? fs::resize_file(library, 0) : void(fs::remove(library));
    const ExportSummary summary = run();
    EXPECT_THAT(summary.warnings, testing::ElementsAre(testing::HasSubstr("library was missing")));
    EXPECT_TRUE(summary.mayBeIncomplete);
    EXPECT_EQ(summary.copiedCount, 0);
    EXPECT_THAT(run().warnings, testing::IsEmpty());
  }
}

}  // namespace
