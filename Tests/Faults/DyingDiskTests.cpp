#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/BackupBuilder.h"
#include "TidewellCore/Export/EarlyEnd.h"

// A disk that gives or takes nothing any more, though it still tells what it told before.
namespace {

namespace fs = std::filesystem;

constexpr int photoCount = 400;

struct Dying {
  const char* name;
  const char* call;
  const char* below;  // "device" or "out"
  int error;
  long stride;  // calls between two tries
  const char* sentence;
};

std::ostream& operator<<(std::ostream& stream, const Dying& dying) { return stream << dying.name; }

struct DyingDiskTest : testing::TestWithParam<Dying> {
  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "The sanitizer's library must come first.";
#endif
    Fixture::BackupContents contents = ExportTest::smallBackup();
    contents.whatsApp.mediaFiles.clear();
    for (int i = 0; i < photoCount; ++i) {
      const std::string name = "p" + std::to_string(i);
      contents.whatsApp.mediaFiles.push_back(ExportTest::media(ExportTest::ana, name, "jpg", name));
    }
    Fixture::writeBackup(contents, program / "device");
  }

  std::ptrdiff_t copied() const {
    const auto files = ExportTest::filesBelow(destination / "messages/Ana");
    return std::ranges::count_if(files, [](const auto& file) { return file.first.ends_with(".jpg"); });
  }

  // From the `number`th call on.
  Finished runWithFault(long number) {
    program.set("LD_PRELOAD", TIDEWELL_FAULT_LIBRARY);
    program.set("TIDEWELL_FAULT",
                std::string(GetParam().call) + ":" + std::to_string(number) + "+:" + std::to_string(GetParam().error));
    program.set("TIDEWELL_FAULT_BELOW", (program / GetParam().below).string());
    const Finished finished = program.run(arguments);
    program.set("LD_PRELOAD", "");
    return finished;
  }

  CommandLine program;
  fs::path destination = program / "out";
  std::vector<std::string> arguments{"export", (program / "device").string(), destination.string(), "--no-progress"};
};

INSTANTIATE_TEST_SUITE_P(
    Disks, DyingDiskTest,
    testing::Values(Dying{"TheBackups", "open", "device", EIO, 90, EarlyEnd::backupGone},
                    Dying{"TheDestinationsFiles", "write", "out", EIO, 1, EarlyEnd::destinationBroken},
                    Dying{"TheDestinationsNames", "rename", "out", EIO, 45, EarlyEnd::destinationBroken},
                    Dying{"TheDestinationsFlush", "fsync", "out", EIO, 1, EarlyEnd::destinationBroken},
                    Dying{"AFullOne", "write", "out", ENOSPC, 1, EarlyEnd::fullDestination}),
    [](const auto& dying) { return std::string(dying.param.name); });

TEST_P(DyingDiskTest, EndsTheRunSoonWithOneSentence) {
  int ended = 0;
  for (long number = 1; number < 1200; number += GetParam().stride) {
    fs::remove_all(destination);
    const Finished finished = runWithFault(number);
    if (finished.exitCode == 0) break;
    // Where only a few files were left, each of them may be named instead.
    EXPECT_THAT(finished.exitCode, testing::AnyOf(1, 3)) << number << finished.errors;
    EXPECT_LE(std::ranges::count(finished.errors, '\n'), 3) << number << finished.errors;
    if (finished.errors.find(GetParam().sentence) != std::string::npos) ++ended;
  }
  EXPECT_GT(ended, 0) << "the disk was never missed while files were copied";
  EXPECT_EQ(program.run(arguments).exitCode, 0);
  EXPECT_EQ(copied(), photoCount);
}

TEST(DyingTemporaryFolder, EndsTheRunSoon) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "The sanitizer's library must come first.";
#endif
  CommandLine program;
  Fixture::writeBackup(ExportTest::smallBackup(), program / "device");
  program.set("TIDEWELL_FAULT_BELOW", (program / "temporary").string());
  program.set("LD_PRELOAD", TIDEWELL_FAULT_LIBRARY);
  for (const std::string call : {"open", "stat", "mkdir", "read", "pread", "write", "unlink", "readdir"}) {
    for (int number = 1; number <= 13; number += 3) {
      for (const int error : {EACCES, EIO}) {
        const std::string fault = call + ":" + std::to_string(number) + "+:" + std::to_string(error);
        program.set("TIDEWELL_FAULT", fault);
        const Finished finished = program.run({"scan", (program / "device").string()});
        // By a signal when it did not end.
        EXPECT_THAT(finished.exitCode, testing::AnyOf(0, 1, 3)) << fault << finished.errors;
        EXPECT_NE(finished.exitCode == 0, !finished.errors.empty()) << fault << finished.errors;
      }
    }
  }
}

}  // namespace
