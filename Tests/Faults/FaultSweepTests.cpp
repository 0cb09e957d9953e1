#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/BackupBuilder.h"

// Every call of the system fails once, at every place: an export then tells what
// is missing, leaves whole files only, and is healed by the next one.
//
// TIDEWELL_FAULT_STEP sets how many places lie between two tries; 1 tries all. Without it
// every place is tried of the calls that keep an export whole, and of the others one in 37.
namespace {

namespace fs = std::filesystem;
using Tree = std::map<std::string, std::string>;

constexpr int shortCount = -1;  // as the library has it

struct Sweep {
  const char* call;
  std::vector<int> errors;
  int quickStep = 37;
};

std::ostream& operator<<(std::ostream& stream, const Sweep& sweep) { return stream << sweep.call; }

bool isHidden(const std::string& path) {
  return path.starts_with(".tidewell-") || path.find("/.tidewell-") != std::string::npos;
}

bool isMedium(const std::string& path) {
  return path.find("/2023-") != std::string::npos || path.find("/undated") != std::string::npos;
}

// What people see of an export.
Tree visible(const fs::path& root) {
  Tree tree;
  if (!fs::exists(root)) return tree;
  for (auto& [path, text] : ExportTest::filesBelow(root)) {
    if (!isHidden(path)) tree.emplace(path, text);
  }
  return tree;
}

struct FaultSweepTest : testing::TestWithParam<Sweep> {
  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "The sanitizer's library must come first.";
#endif
  }

  // Ana has a picture and Bea's name stands among the contacts alone, so that all kinds of files are there.
  void makeBackup(bool isEncrypted) {
    Fixture::BackupContents contents = ExportTest::smallBackup(isEncrypted);
    contents.whatsApp.files.push_back(
        {.relativePath = "Media/Profile/5511900001111-1.jpg", .content = Fixture::bytesOf("\xFF\xD8\xFF and so on")});
    contents.whatsApp.chats.back().name = {};
    contents.whatsApp.contacts = {{.fullName = "Bea", .whatsAppID = ExportTest::bea}};
    Fixture::writeBackup(contents, program / "device");
    if (!isEncrypted) return;
    Fixture::writeFile(program / "password", contents.encryption->keyBag.password + "\n");
    arguments.insert(arguments.end(), {"--password-file", (program / "password").string()});
  }

  static int step() {
    const char* text = std::getenv("TIDEWELL_FAULT_STEP");
    return text == nullptr ? GetParam().quickStep : std::max(1, std::atoi(text));
  }

  Finished run() const { return program.run(arguments); }

  Finished runWithFault(long number, int error) {
    fs::remove(program / "mark");
    program.set("LD_PRELOAD", TIDEWELL_FAULT_LIBRARY);
    program.set("TIDEWELL_FAULT",
                std::string(GetParam().call) + ":" + std::to_string(number) + ":" + std::to_string(error));
    const Finished finished = run();
    program.set("LD_PRELOAD", "");
    return finished;
  }

  bool hasStruck() const { return fs::exists(program / "mark"); }

  // What a run that may have lost something says is judged by what it left.
  void judge(const Finished& finished, const Tree& whole, const std::string& place) {
    const Tree left = visible(destination);
    EXPECT_THAT(finished.exitCode, testing::AnyOf(0, 1, 3)) << place << finished.errors;
    for (const auto& [path, text] : left) {
      if (!isMedium(path)) continue;
      const auto expected = whole.find(path);
      EXPECT_TRUE(expected != whole.end() && expected->second == text) << place << path << " is not whole";
    }
    if (finished.exitCode == 0) {
      EXPECT_TRUE(left == whole) << place << "a silent loss: " << firstDifference(left, whole);
    } else if (finished.exitCode == 3) {
      judgeFailures(finished, left, whole, place);
    }
  }

  static void judgeFailures(const Finished& finished, const Tree& left, const Tree& whole, const std::string& place) {
    const Json::Object summary = finished.json();
    const bool missesMessages = *summary.at("mayBeIncomplete").as<bool>();
    for (const auto& [path, text] : whole) {
      if (!isMedium(path) || left.contains(path) || missesMessages) continue;
      const std::string name = "\"name\":\"" + path.substr(path.rfind('/') + 1) + "\"";
      EXPECT_NE(finished.output.find(name), std::string::npos) << place << path << " is lost without a word";
    }
    EXPECT_TRUE(missesMessages || !summary.at("failures").as<Json::Array>()->empty()) << place;
  }

  static std::string firstDifference(const Tree& left, const Tree& whole) {
    for (const auto& [path, text] : whole) {
      if (!left.contains(path)) return path + " is missing";
      if (left.at(path) != text) return path + " differs";
    }
    for (const auto& [path, text] : left) {
      if (!whole.contains(path)) return path + " is too many";
    }
    return "none";
  }

  void heal(const Tree& whole, const std::string& place) {
    const Finished finished = run();
    EXPECT_EQ(finished.exitCode, 0) << place << finished.errors;
    const Tree left = visible(destination);
    EXPECT_TRUE(left == whole) << place << "not healed: " << firstDifference(left, whole);
    EXPECT_THAT(program.temporaryFiles(), testing::IsEmpty()) << place;
  }

  // Into an empty folder, and into one that holds an export.
  void sweep(bool isEncrypted) {
    makeBackup(isEncrypted);
    ASSERT_EQ(run().exitCode, 0);
    const Tree whole = visible(destination);
    const auto backup = Fixture::treeSnapshot(program / "device");
    program.set("TIDEWELL_FAULT_BELOW", (program / "").string());
    program.set("TIDEWELL_FAULT_MARK", (program / "mark").string());
    long tries = 0;
    for (const bool isFresh : {true, false}) {
      for (const int error : GetParam().errors) {
        for (long number = 1 + error % step() * (step() > 1);; number += step()) {
          if (isFresh) fs::remove_all(destination);
          const std::string place = std::string(GetParam().call) + " " + std::to_string(number) + " " +
                                    (error == shortCount ? "short" : ::strerrorname_np(error)) +
                                    (isFresh ? "" : ", again") + (isEncrypted ? ", encrypted: " : ": ");
          const Finished finished = runWithFault(number, error);
          if (!hasStruck()) break;
          ++tries;
          judge(finished, whole, place);
          heal(whole, place);
          if (HasFailure() && step() > 1) return;
        }
      }
    }
    EXPECT_TRUE(Fixture::treeSnapshot(program / "device") == backup) << "the backup was changed";
    std::printf("%s: %ld faults\n", GetParam().call, tries);
  }

  CommandLine program;
  fs::path destination = program / "out";
  std::vector<std::string> arguments{"export", (program / "device").string(), destination.string(), "--json",
                                     "--no-progress"};
};

INSTANTIATE_TEST_SUITE_P(Calls, FaultSweepTest,
                         testing::Values(Sweep{"open", {EIO, EACCES, ENOSPC}}, Sweep{"read", {EIO, EINTR, shortCount}},
                                         Sweep{"pread", {EIO, EINTR, shortCount}},
                                         Sweep{"write", {EIO, ENOSPC, EDQUOT, EINTR, shortCount}},
                                         Sweep{"copy_file_range", {EIO, ENOSPC, EINTR, shortCount}},
                                         Sweep{"rename", {EIO, ENOSPC, EACCES}, 1},
                                         Sweep{"mkdir", {EIO, ENOSPC, EACCES}, 5}, Sweep{"fsync", {EIO, ENOSPC}, 1},
                                         Sweep{"close", {EIO, ENOSPC}}, Sweep{"statvfs", {EIO}, 1},
                                         Sweep{"unlink", {EIO, EACCES}}, Sweep{"utimensat", {EIO, EACCES}, 1},
                                         Sweep{"stat", {EIO, EACCES}}, Sweep{"readdir", {EIO}}),
                         [](const auto& sweep) { return std::string(sweep.param.call); });

TEST_P(FaultSweepTest, APlainExportTellsWhatIsMissingAndIsHealed) { sweep(false); }

TEST_P(FaultSweepTest, AnEncryptedExportTellsWhatIsMissingAndIsHealed) { sweep(true); }

}  // namespace
