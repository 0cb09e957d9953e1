#include "TidewellCore/Export/MovedFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/FolderNames.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using ExportTest::textOf;
using testing::HasSubstr;
using testing::IsEmpty;

struct MovedFilesTest : testing::TestWithParam<bool> {
  MovedFilesTest() { run(); }

  ExportSummary run() const { return scene.run(ExportOptions::defaultOptions()); }
  fs::path file(const std::string& ending) const {
    for (const auto& entry : fs::recursive_directory_iterator(scene.content)) {
      if (entry.path().filename().string().ends_with(ending)) return entry.path();
    }
    return {};
  }
  // Puts a file into a folder of the reader's own.
  fs::path move(const std::string& ending, const std::string& name) const {
    fs::path to = scene.content / "The best" / name;
    fs::create_directories(to.parent_path());
    fs::rename(file(ending), to);
    return to;
  }

  ExportTest::Scene scene{ExportTest::smallBackup(GetParam())};
};
INSTANTIATE_TEST_SUITE_P(Backups, MovedFilesTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(MovedFilesTest, AreNotCopiedAgain) {
  const fs::path former = file(".jpg");
  const std::string chat = former.parent_path().filename();
  const std::string bytes = textOf(former);
  move(".jpg", "On the beach.jpg");
  const ExportSummary summary = run();
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 5);
  EXPECT_FALSE(fs::exists(former));
  EXPECT_EQ(textOf(scene.content / "The best" / "On the beach.jpg"), bytes);
  EXPECT_THAT(textOf(scene.content / chat / FolderNames::htmlTranscript), HasSubstr("../The best/On the beach.jpg"));
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
  const auto before = filesBelow(scene.folder.path());
  EXPECT_EQ(run().copiedCount, 0);
  EXPECT_EQ(filesBelow(scene.folder.path()), before);
}

TEST_P(MovedFilesTest, AreKnownByTheDigestThatAVerificationKept) {
  Verification::run({.destination = scene.destination});
  move(".jpg", "On the beach.jpg");
  EXPECT_EQ(run().copiedCount, 0);
  EXPECT_THAT(Verification::run({.destination = scene.destination}).findings, IsEmpty());
}

TEST_P(MovedFilesTest, AFileOfTheSameSizeIsNotTheMedium) {
  const fs::path former = file(".jpg");
  const fs::path other = move(".jpg", "another.jpg");
  std::string bytes = textOf(other);
  bytes.back() = static_cast<char>(bytes.back() ^ 1);
  std::ofstream(other, std::ios::binary) << bytes;
  EXPECT_EQ(run().copiedCount, 1);
  EXPECT_TRUE(fs::exists(former));
  EXPECT_EQ(textOf(other), bytes);
}

TEST_P(MovedFilesTest, ACopyThatStandsElsewhereIsNobodys) {
  const fs::path former = file(".jpg");
  fs::create_directory(scene.content / "The best");
  fs::copy_file(former, scene.content / "The best" / "a.jpg");
  const auto before = filesBelow(scene.folder.path());
  EXPECT_EQ(run().copiedCount, 0);
  EXPECT_EQ(filesBelow(scene.folder.path()), before);
}

}  // namespace
