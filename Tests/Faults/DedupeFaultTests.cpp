#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Destination/FolderManifest.h"

// A clean-up of folders on a disk that does not give a file at one moment: two
// files that it could not compare are not two different files.
namespace {

namespace fs = std::filesystem;

struct DedupeFaultTest : testing::TestWithParam<const char*> {
  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "The sanitizer's library must come first.";
#endif
  }

  void writeTwice() const {
    fs::remove_all(destination);
    for (const std::string folder : {"Ana", "5511900001111@s.whatsapp.net"}) {
      Fixture::writeFile(content / folder / "a.jpg", "a photo");
      Fixture::writeFile(content / folder / "b.jpg", "another");
    }
    fs::create_directories(content / "_viewer");
    FolderManifest::save(content, {{"5511900001111@s.whatsapp.net", "Ana"}});
  }

  // Ana's folder, which is all that may be left.
  bool isMerged() const {
    return ExportTest::filesBelow(content / "Ana").size() == 2 && !fs::exists(content / "5511900001111@s.whatsapp.net");
  }

  Finished runWithFault(long number) {
    fs::remove(program / "mark");
    program.set("TIDEWELL_FAULT_BELOW", destination.string());
    program.set("TIDEWELL_FAULT_MARK", (program / "mark").string());
    program.set("LD_PRELOAD", TIDEWELL_FAULT_LIBRARY);
    program.set("TIDEWELL_FAULT", std::string(GetParam()) + ":" + std::to_string(number) + ":" + std::to_string(EIO));
    const Finished finished = program.run(arguments);
    program.set("LD_PRELOAD", "");
    return finished;
  }

  CommandLine program;
  fs::path destination = program / "out";
  fs::path content = destination / "messages";
  std::vector<std::string> arguments{"dedupe", "--apply", destination.string()};
};

INSTANTIATE_TEST_SUITE_P(Calls, DedupeFaultTest, testing::Values("open", "read", "stat", "readdir"),
                         [](const auto& call) { return std::string(call.param); });

TEST_P(DedupeFaultTest, NoTwinIsKeptWithoutAWordAndTheNextRunMergesIt) {
  int warned = 0;
  for (long number = 1;; ++number) {
    writeTwice();
    const Finished finished = runWithFault(number);
    if (!fs::exists(program / "mark")) break;
    const std::string place = std::string(GetParam()) + " " + std::to_string(number) + ": " + finished.errors;
    EXPECT_THAT(finished.exitCode, testing::AnyOf(0, 1, 3)) << place;
    const bool isWarned = finished.errors.find("one of the two cannot be read") != std::string::npos;
    EXPECT_EQ(finished.exitCode == 3, isWarned) << place;
    EXPECT_TRUE(finished.exitCode != 0 || isMerged()) << place << "a twin is kept without a word";
    warned += isWarned ? 1 : 0;
    EXPECT_EQ(program.run(arguments).exitCode, 0) << place;
    EXPECT_TRUE(isMerged()) << place;
  }
  EXPECT_TRUE(warned > 0 || GetParam() != std::string("read"));
}

}  // namespace
