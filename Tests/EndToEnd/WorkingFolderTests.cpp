#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SampleConversations.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;
using Seconds = std::chrono::duration<double>;

// Nothing decrypted stays in the temporary folder, however a run ends.
class WorkingFolders : public testing::Test {
 protected:
  WorkingFolders() {
    Fixture::BackupContents contents = Fixture::sampleBackup({.messageCount = 4000, .mediaCount = 40});
    contents.encryption = Fixture::Encryption{.keyBag = {.password = password, .doubleIterations = 100}};
    Fixture::writeBackup(contents, commandLine_ / "device");
    Fixture::writeFile(commandLine_ / "password.txt", password);
  }

  Finished scan() const { return commandLine_.run({"scan", "device", "--password-file", "password.txt"}); }

  static constexpr const char* password = "correct horse";
  static constexpr int mostTries = 20;  // of what a moment decides
  const std::vector<std::string> export_{"export", "device", "saved", "--password-file", "password.txt"};
  CommandLine commandLine_;
};

// TIDEWELL_KILLS asks for more of them.
int wantedKills() {
  constexpr int everyDay = 8;
  const char* wanted = std::getenv("TIDEWELL_KILLS");
  return wanted == nullptr ? everyDay : std::max(1, std::atoi(wanted));
}

TEST_F(WorkingFolders, AreGoneAfterKillsAtAnyMomentAndOneScan) {
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(commandLine_.run(export_).exitCode, 0);
  const Seconds whole = std::chrono::steady_clock::now() - start;
  const int count = wantedKills();
  int killed = 0;
  int left = 0;
  for (int i = 0; i < count; ++i) {
    fs::remove_all(commandLine_ / "saved");
    // What an earlier one left is swept when a run begins, so what stands there now is this one's.
    if (commandLine_.kill(export_, whole * (i + 0.5) / count)) ++killed;
    if (!commandLine_.temporaryFiles().empty()) ++left;
  }
  RecordProperty("killed", killed);
  RecordProperty("left", left);
  EXPECT_GT(killed, 0);
  EXPECT_EQ(scan().exitCode, 0);
  EXPECT_THAT(commandLine_.temporaryFiles(), IsEmpty()) << left << " of " << killed << " left something";
}

TEST_F(WorkingFolders, AreLeftByAKillAndGoneAfterAScan) {
  for (int tries = 0; tries < mostTries && commandLine_.temporaryFiles().empty(); ++tries) {
    commandLine_.runAnd(export_, "Reading chats", [](pid_t child) { ::kill(child, SIGKILL); });
  }
  EXPECT_THAT(commandLine_.temporaryFiles(), testing::Not(IsEmpty())) << "killed too early or too late each time";
  EXPECT_EQ(scan().exitCode, 0);
  EXPECT_THAT(commandLine_.temporaryFiles(), IsEmpty());
}

TEST_F(WorkingFolders, AreRemovedAtASecondSignalToo) {
  for (const int second : {SIGTERM, SIGHUP, SIGQUIT}) {
    // On a busy machine the work may end by the first signal before the second one arrives.
    bool wasWaitedFor = true;
    for (int tries = 0; tries < mostTries && wasWaitedFor; ++tries) {
      const Finished finished = commandLine_.runAnd(export_, "Reading chats", [second](pid_t child) {
        ::kill(child, SIGINT);
        ::kill(child, second);
      });
      EXPECT_EQ(finished.exitCode, 130);
      EXPECT_THAT(commandLine_.temporaryFiles(), IsEmpty());
      wasWaitedFor = finished.errors.find("cancelled") != std::string::npos;
    }
    EXPECT_FALSE(wasWaitedFor) << second;
  }
}

TEST_F(WorkingFolders, AreRemovedAtEverySignalThatEndsAProgram) {
  for (const int signal : {SIGQUIT, SIGXCPU, SIGUSR1, SIGUSR2}) {
    const Finished finished = commandLine_.interrupt(export_, "Reading chats", signal);
    EXPECT_EQ(finished.exitCode, 130) << signal;
    EXPECT_THAT(finished.errors, HasSubstr("The export was cancelled.\n")) << signal;
    EXPECT_THAT(commandLine_.temporaryFiles(), IsEmpty()) << signal;
  }
}

TEST_F(WorkingFolders, AreMissedWhereTMPDIRNamesAFolderThatIsNotThere) {
  commandLine_.set("TMPDIR", "/nowhere");
  const Finished finished = commandLine_.run(export_);
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.errors.substr(finished.errors.find("Could")),
            "Could not create a working folder in “/nowhere”: it is not there.\n");
  commandLine_.set("TMPDIR", "");
  EXPECT_EQ(commandLine_.run(export_).exitCode, 0);
}

TEST_F(WorkingFolders, AreRemovedWhereFilesMayNotGrowSoLong) {
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
  const rlimit small{.rlim_cur = 4096, .rlim_max = former.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const Finished finished = commandLine_.run(export_);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &former), 0);
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, HasSubstr("a file may not be that large here."));
  EXPECT_THAT(commandLine_.temporaryFiles(), IsEmpty());
}

}  // namespace
