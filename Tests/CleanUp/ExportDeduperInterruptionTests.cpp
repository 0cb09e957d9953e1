#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Tests/CleanUp/DedupeScene.h"
#include "Tests/Support/Failures.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::archiveChat;
using ExportTest::Tree;

// What a merge of three folders meets, and an archive that shows it all.
struct DedupeInterruptionTest : ExportTest::DedupeScene {
  DedupeInterruptionTest() { build(); }

  void build() const {
    fs::remove_all(destination);
    fs::create_directories(content / "_viewer");
    std::vector<std::string> shown;
    for (const std::string& place : {std::string("Ana"), ana, anaLID}) {
      for (const char* file : {"a.jpg", "b", "b-2", "c"}) {
        write(place + "/" + file, place + file);
        shown.push_back(place + "/" + file);
      }
      write(place + "/shared", "shared");
      shown.push_back(place + "/shared");
      write(place + "/_transcript.txt", place);
    }
    remember({{ana, "Ana"}, {anaLID, "Ana"}});
    writeArchive({archiveChat(ana, ana, shown), archiveChat(anaLID, anaLID, shown)});
  }

  // Ends like a crash the `count`th time that the run asks. Tells whether it came so far.
  bool crash(int count) const {
    const pid_t child = ::fork();
    if (child == 0) {
      int asked = 0;
      dedupe(true, [&] {
        if (++asked == count) ::_exit(7);
        return false;
      });
      ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) && WEXITSTATUS(status) == 7;
  }
};

TEST_F(DedupeInterruptionTest, ARepeatedMergeEndsAsAnUninterruptedOne) {
  EXPECT_TRUE(dedupe(true).archiveUpdated);
  const Tree expected = ExportTest::filesBelow(destination);
  int count = 1;
  for (build(); crash(count); build(), ++count) {
    dedupe(true);
    ASSERT_EQ(ExportTest::filesBelow(destination), expected) << count;
  }
  EXPECT_GT(count, 20) << "every step of the merge was interrupted";
}

TEST_F(DedupeInterruptionTest, TwoInterruptionsAreNoWorseThanOne) {
  dedupe(true);
  const Tree expected = ExportTest::filesBelow(destination);
  int count = 13;  // the first of the steps that change something
  for (build(); crash(count); build(), ++count) {
    crash(count - 1);
    crash(9);
    dedupe(true);
    ASSERT_EQ(ExportTest::filesBelow(destination), expected) << count;
  }
}

TEST_F(DedupeInterruptionTest, CancellingLeavesAnArchiveThatShowsWhatIsThere) {
  int asked = 0;
  const CancellationCheck cancelled = [&] { return ++asked == 20; };
  EXPECT_THAT([&] { dedupe(true, cancelled); }, Fixture::failsWith(TidewellError::cancelled()));
  EXPECT_FALSE(fs::exists(content / ".tidewell-dedupe.json"));
  EXPECT_TRUE(fs::exists(content / ana));
  const Tree between = ExportTest::filesBelow(destination);
  build();
  EXPECT_NE(ExportTest::filesBelow(destination), between) << "it had begun";
}

TEST_F(DedupeInterruptionTest, TheArchiveAndTheManifestFollowLater) {
  dedupe(true);
  const Tree expected = ExportTest::filesBelow(destination);
  build();
  remember({{ana, "Ana"}, {anaLID, "Ana"}, {"5511900001111@S.WhatsApp.net", ana}});
  fs::remove(content / ".tidewell-manifest.json");
  fs::create_directory(content / ".tidewell-manifest.json");
  EXPECT_THROW(dedupe(true), fs::filesystem_error);
  EXPECT_TRUE(fs::exists(content / ".tidewell-dedupe.json"));
  fs::remove(content / ".tidewell-manifest.json");
  EXPECT_THAT(dedupe(false).pairs, testing::IsEmpty());
  dedupe(true);
  EXPECT_FALSE(fs::exists(content / ".tidewell-dedupe.json"));
  EXPECT_EQ(remembered(), (FolderAssignment{{ana, "Ana"}, {anaLID, "Ana"}, {"5511900001111@S.WhatsApp.net", "Ana"}}));
  Tree files = ExportTest::filesBelow(destination);
  for (const char* file : {"messages/.tidewell-manifest.json", "messages/_viewer/folders.json"}) {
    files[file] = expected.at(file);
  }
  EXPECT_EQ(files, expected);
}

TEST_F(DedupeInterruptionTest, AJournalThatCannotBeReadIsNone) {
  for (const char* text : {"", "[]", "{\"files\": [], \"folders\": {\"x\": 1}}", "{\"files\""}) {
    build();
    write(".tidewell-dedupe.json", text);
    EXPECT_EQ(dedupe(true).removedFolderCount, 2) << text;
    EXPECT_FALSE(fs::exists(content / ".tidewell-dedupe.json"));
  }
}

}  // namespace
