#include "TidewellCore/Platform/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

#include "Tests/Support/PrivateTemporaryFolder.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

constexpr const char* uuid = "0C4E2C57-1B5C-4E13-8B43-3F9E7D2B6A10";

mode_t modeOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

// What such a folder is when the one that made it was killed.
fs::path leftBehind(const fs::path& parent, const std::string& name, mode_t mode = 0700) {
  const fs::path folder = parent / name;
  Fixture::writeFile(folder / "Manifest.db", "secret");
  ::chmod(folder.c_str(), mode);
  return folder;
}

TEST(TemporaryFolder, IsNamedByItsPrefixAndAnUpperCaseUUID) {
  const TemporaryFolder folder("Tidewell-manifest-");
  EXPECT_EQ(folder.path().parent_path(), fs::temp_directory_path());
  // Version 4 and variant 1 of RFC 4122.
  EXPECT_THAT(
      folder.path().filename().string(),
      testing::MatchesRegex("Tidewell-manifest-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST(TemporaryFolder, IsOpenToItsUserAlone) {
  for (const mode_t mask : {0000u, 0022u, 0777u}) {
    const mode_t former = ::umask(mask);
    const TemporaryFolder folder("Tidewell-test-");
    ::umask(former);
    EXPECT_EQ(modeOf(folder.path()), 0700u);
  }
}

TEST(TemporaryFolder, IsRemovedWithAllItHolds) {
  fs::path path;
  {
    const TemporaryFolder folder("Tidewell-test-");
    path = folder.path();
    Fixture::writeFile(path / "a" / "b", "x");
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(TemporaryFolder, IsAnotherEachTime) {
  EXPECT_NE(TemporaryFolder("Tidewell-test-").path(), TemporaryFolder("Tidewell-test-").path());
}

TEST(TemporaryFolder, RemovesNothingBehindALink) {
  const Fixture::TemporaryDirectory mine;
  Fixture::writeFile(mine / "kept", "x");
  {
    const TemporaryFolder folder("Tidewell-test-");
    fs::create_directory_symlink(mine.path(), folder.path() / "link");
  }
  EXPECT_TRUE(fs::exists(mine / "kept"));
}

TEST(TemporaryFolder, MovesToAnotherOwner) {
  TemporaryFolder first("Tidewell-test-");
  const fs::path path = first.path();
  {
    const TemporaryFolder second = std::move(first);
    EXPECT_EQ(second.path(), path);
    EXPECT_TRUE(fs::exists(path));
  }
  EXPECT_FALSE(fs::exists(path));
}

class TemporaryFolderSweep : public testing::Test {
 protected:
  Fixture::PrivateTemporaryFolder temporary_;
};

TEST_F(TemporaryFolderSweep, RemovesWhatNobodyHolds) {
  leftBehind(temporary_.path(), std::string("Tidewell-manifest-") + uuid);
  leftBehind(temporary_.path(), std::string("Tidewell-databases-") + uuid);
  TemporaryFolder::sweep();
  EXPECT_THAT(temporary_.names(), IsEmpty());
}

TEST_F(TemporaryFolderSweep, LeavesWhatIsHeldInThisProcess) {
  const TemporaryFolder folder(TemporaryFolder::manifestPrefix);
  TemporaryFolder::sweep();
  EXPECT_TRUE(fs::exists(folder.path()));
}

TEST_F(TemporaryFolderSweep, TellsALivingProcessFromOneThatWasKilled) {
  const pid_t child = ::fork();
  if (child == 0) {
    const TemporaryFolder folder(TemporaryFolder::manifestPrefix);
    Fixture::writeFile(folder.path() / "Manifest.db", "secret");
    for (;;) ::pause();
  }
  while (temporary_.names().empty() || !fs::exists(temporary_.path() / temporary_.names()[0] / "Manifest.db")) {
  }
  TemporaryFolder::sweep();
  EXPECT_EQ(temporary_.names().size(), 1u);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  TemporaryFolder::sweep();
  EXPECT_THAT(temporary_.names(), IsEmpty());
}

TEST_F(TemporaryFolderSweep, LeavesWhatHasAnotherNameOrAnotherMode) {
  const std::string prefix = "Tidewell-manifest-";
  const std::vector<std::string> others{prefix,
                                        prefix + "mine",
                                        prefix + uuid + "-2",
                                        prefix + "0c4e2c57-1b5c-4e13-8b43-3f9e7d2b6a10",
                                        std::string("Tidewell-test-") + uuid,
                                        std::string("Other-manifest-") + uuid};
  for (const std::string& name : others) leftBehind(temporary_.path(), name);
  leftBehind(temporary_.path(), std::string("Tidewell-databases-") + uuid, 0755);
  TemporaryFolder::sweep();
  EXPECT_EQ(temporary_.names().size(), others.size() + 1);
}

TEST_F(TemporaryFolderSweep, FollowsNoLink) {
  const Fixture::TemporaryDirectory mine;
  const fs::path linked = leftBehind(mine.path(), std::string("Tidewell-manifest-") + uuid);
  fs::create_directory_symlink(linked, temporary_.path() / linked.filename());
  Fixture::writeFile(temporary_.path() / (std::string("Tidewell-databases-") + uuid), "a file");
  const fs::path dead = leftBehind(temporary_.path(), "Tidewell-manifest-1C4E2C57-1B5C-4E13-8B43-3F9E7D2B6A10");
  fs::create_directory_symlink(linked, dead / "link");
  TemporaryFolder::sweep();
  EXPECT_TRUE(fs::exists(linked / "Manifest.db"));
  EXPECT_FALSE(fs::exists(dead));
  EXPECT_TRUE(fs::is_symlink(temporary_.path() / linked.filename()));
  EXPECT_TRUE(fs::exists(temporary_.path() / (std::string("Tidewell-databases-") + uuid)));
}

TEST_F(TemporaryFolderSweep, LeavesThoseOfAnotherUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  const fs::path folder = leftBehind(temporary_.path(), std::string("Tidewell-manifest-") + uuid);
  ASSERT_EQ(::chown(folder.c_str(), 12345, 12345), 0);
  TemporaryFolder::sweep();
  EXPECT_TRUE(fs::exists(folder));
}

TEST_F(TemporaryFolderSweep, TakesNoFolderFromTheOneThatIsMakingIt) {
  // Sweeps as soon as something is made there, which is the worst moment.
  const int watch = ::inotify_init1(IN_CLOEXEC);
  ASSERT_GE(::inotify_add_watch(watch, temporary_.path().c_str(), IN_CREATE), 0);
  std::atomic<bool> isDone = false;
  std::thread sweeper([&] {
    std::array<char, 4096> events{};
    while (!isDone && ::read(watch, events.data(), events.size()) > 0) TemporaryFolder::sweep();
  });
  for (int i = 0; i < 2000; ++i) {
    const TemporaryFolder folder(TemporaryFolder::manifestPrefix);
    const fs::path file = folder.path() / "Manifest.db";
    const int number = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    EXPECT_GE(number, 0) << i;
    if (number >= 0) ::close(number);
    EXPECT_TRUE(fs::exists(file)) << i;
  }
  isDone = true;
  Fixture::writeFile(temporary_.path() / "last", "");
  sweeper.join();
  ::close(watch);
  fs::remove(temporary_.path() / "last");
  EXPECT_THAT(temporary_.names(), IsEmpty());
}

TEST_F(TemporaryFolderSweep, LeavesNothingOfAProgramThatEndsInTheMidstOfItsWork) {
  const pid_t child = ::fork();
  if (child == 0) {
    std::thread worker([] {
      const TemporaryFolder folder(TemporaryFolder::databasesPrefix);
      const TemporaryFolder moved = TemporaryFolder(TemporaryFolder::manifestPrefix);
      for (int i = 0;; ++i) {
        const fs::path file = folder.path() / std::to_string(i);
        ::close(::open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    TemporaryFolder::removeAllForGood();
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
  EXPECT_THAT(temporary_.names(), IsEmpty());
}

}  // namespace
