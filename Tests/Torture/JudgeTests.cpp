#include "Tests/Torture/Judge.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/TemporaryDirectory.h"

// The judge that the random rounds stand before finds what it is there for.
namespace {

namespace fs = std::filesystem;
using Torture::Difference;
using Torture::Destination::look;

struct JudgeTest : testing::Test {
  JudgeTest() {
    Fixture::writeFile(program / "password", "correct horse\n");
    phone.write(program / "device");
    judge.begin(phone);
    finished = program.run({"export", "device", "out", "--json", "--no-progress", "--password-file", "password"});
    judge.judgeRun(finished, phone);
  }

  // A medium that is no picture, with content.
  fs::path medium() const {
    for (const auto& file : look(destination)) {
      if (file.path.find("_k") != std::string::npos && !Torture::Destination::isPage(file.path)) {
        return destination / file.path;
      }
    }
    return {};
  }

  CommandLine program;
  Fixture::SeededRandom random{7};
  Torture::Phone phone{random};
  fs::path destination = program / "out";
  Torture::Judge judge{destination};
  Finished finished;
};

TEST_F(JudgeTest, HasNothingAgainstAWholeExport) {
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_GT(phone.media().size(), 2U);
  EXPECT_GT(phone.texts().size(), 2U);
  judge.judgeFiles();
  judge.requireWhole(phone);
}

TEST_F(JudgeTest, FindsAMediumThatIsMissing) {
  judge.begin(phone);
  fs::remove(medium());
  EXPECT_THROW(judge.judgeFiles(), Difference);
  EXPECT_THROW(judge.requireWhole(phone), Difference);
  EXPECT_THROW(judge.judgeRun(finished, phone), Difference);
}

TEST_F(JudgeTest, FindsAHalfFile) {
  fs::resize_file(medium(), 1);
  EXPECT_THROW(judge.judgeFiles(), Difference);
}

TEST_F(JudgeTest, TakesATranscriptUnderANameOfItsOwnForWhatItWas) {
  const fs::path transcript = medium().parent_path() / "_transcript.html";
  const fs::path kept = medium().parent_path() / "_transcript-2.html";
  judge.begin(phone);
  fs::copy_file(transcript, kept);
  EXPECT_NO_THROW(judge.judgeFiles());
  fs::resize_file(kept, fs::file_size(kept) - 1);
  EXPECT_THROW(judge.judgeFiles(), Difference);
}

TEST_F(JudgeTest, FindsAnEmptyFile) {
  fs::resize_file(medium(), 0);
  EXPECT_THROW(judge.judgeFiles(), Difference);
}

TEST_F(JudgeTest, FindsAMediumThatIsThereTwice) {
  const fs::path file = medium();
  fs::copy_file(file, file.parent_path() / ("again" + file.extension().string()));
  EXPECT_THROW(judge.requireWhole(phone), Difference);
}

TEST_F(JudgeTest, LooksForMediaWhereTheirFolderWent) {
  const fs::path folder = medium().parent_path();
  const fs::path moved = folder.parent_path() / "Moved";
  fs::rename(folder, moved);
  fs::create_directory(folder);
  for (const char* transcript : {"_transcript.html", "_transcript.txt"})
    fs::rename(moved / transcript, folder / transcript);
  EXPECT_THROW(judge.requireWhole(phone), Difference);
  judge.addRenamed(folder.filename().string(), "Moved");
  EXPECT_NO_THROW(judge.requireWhole(phone));
}

TEST_F(JudgeTest, TakesASecondCopyOfWhatABrokenOffRunLeftInARenamedFolder) {
  const fs::path file = medium();
  const fs::path folder = file.parent_path();
  const fs::path moved = folder.parent_path() / "Moved";
  judge.begin(phone);
  judge.addRenamed(folder.filename().string(), "Moved");
  fs::create_directory(moved);
  fs::copy_file(file, moved / file.filename());
  EXPECT_NO_THROW(judge.requireWhole(phone));
}

TEST_F(JudgeTest, FindsATextThatIsMissing) {
  for (const auto& file : look(destination)) {
    if (file.path.ends_with("_transcript.txt")) fs::resize_file(destination / file.path, 0);
  }
  EXPECT_THROW(judge.requireWhole(phone), Difference);
}

TEST_F(JudgeTest, FindsMessagesThatTheArchiveLacks) {
  for (const auto& file : look(destination)) {
    if (file.path.find("/block-") != std::string::npos) fs::remove(destination / file.path);
  }
  EXPECT_THROW(judge.requireWhole(phone), Difference);
}

TEST_F(JudgeTest, FindsALossThatNobodyNamed) {
  Finished incomplete{.exitCode = 3,
                      .output = R"({"failures":[{"name":"x","chat":"y"}],"warnings":[],"mayBeIncomplete":false})"
                                "\n"};
  EXPECT_NO_THROW(judge.judgeRun(incomplete, phone));
  fs::remove(medium());
  EXPECT_THROW(judge.judgeRun(incomplete, phone), Difference);
}

TEST_F(JudgeTest, FindsACrash) { EXPECT_THROW(judge.judgeRun({.exitCode = -11}, phone), Difference); }

}  // namespace
