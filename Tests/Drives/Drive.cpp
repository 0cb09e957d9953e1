#include "Tests/Drives/Drive.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace Fixture {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t imageSize = 64 << 20;

// The process, or -1 when there is no such program.
pid_t start(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
  }
  pid_t process = -1;
  const int failure = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return failure == 0 ? process : -1;
}

bool isMountedAt(const fs::path& place) {
  struct stat here {};
  struct stat above {};
  return ::stat(place.c_str(), &here) == 0 && ::stat(place.parent_path().c_str(), &above) == 0 &&
         here.st_dev != above.st_dev;
}

std::vector<std::string> programOf(const fs::path& folder, const fs::path& place, const DriveOptions& options) {
  std::vector<std::string> command{TIDEWELL_TEST_DRIVE, folder.string(), place.string()};
  for (const std::string& argument : options.arguments()) command.push_back(argument);
  return command;
}

const fs::path& emptyImage(const fs::path& image) {
  fs::create_directories(image.parent_path());
  std::ofstream(image).close();
  fs::resize_file(image, imageSize);
  return image;
}

const fs::path& made(const fs::path& folder) {
  fs::create_directories(folder);
  return folder;
}

}  // namespace

Drive::Drive(const fs::path& folder, const fs::path& place, const DriveOptions& options)
    : Drive(place, {}, programOf(made(folder), place, options)) {}

Drive Drive::ntfs(const fs::path& image, const fs::path& place) {
  const std::string file = emptyImage(image).string();
  return {place,
          {"mkntfs", "--fast", "--force", "--quiet", file},
          {"ntfs-3g", "-o", "windows_names,no_detach", file, place.string()}};
}

Drive Drive::exfat(const fs::path& image, const fs::path& place) {
  const std::string file = emptyImage(image).string();
  return {place, {"mkfs.exfat", file}, {"mount", "-t", "exfat", "-o", "loop,iocharset=utf8", file, place.string()}};
}

Drive Drive::vfat(const fs::path& image, const fs::path& place) {
  const std::string file = emptyImage(image).string();
  return {place, {"mkfs.vfat", file}, {"mount", "-t", "vfat", "-o", "loop,utf8", file, place.string()}};
}

Drive::Drive(fs::path place, const Command& format, const Command& mount) : place_(std::move(place)) {
  fs::create_directories(place_);
  run(format, mount);
}

void Drive::run(const Command& format, const Command& mount) {
  if (!format.empty()) {
    int status = -1;
    const pid_t formatter = start(format);
    if (formatter < 0 || ::waitpid(formatter, &status, 0) != formatter || status != 0) {
      whyNot_ = format[0] + " is not here, or cannot make the drive.";
      return;
    }
  }
  process_ = start(mount);
  waitForMount(mount);
}

void Drive::waitForMount(const Command& mount) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!isMountedAt(place_)) {
    int status = 0;
    const bool hasEnded = process_ < 0 || ::waitpid(process_, &status, WNOHANG) == process_;
    if (hasEnded) process_ = -1;
    if ((hasEnded && !isMountedAt(place_)) || std::chrono::steady_clock::now() > end) {
      whyNot_ = mount[0] + " is not here, or cannot mount such a drive.";
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

void Drive::pullOut() {
  if (process_ > 0) ::kill(process_, SIGKILL);
}

void Drive::unmount() { ::umount2(place_.c_str(), MNT_DETACH); }

Drive::~Drive() {
  if (isMounted()) unmount();
  if (process_ < 0) return;
  int status = 0;
  for (int attempt = 0; attempt < 400; ++attempt) {
    if (::waitpid(process_, &status, WNOHANG) == process_) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ::kill(process_, SIGKILL);
  ::waitpid(process_, &status, 0);
}

}  // namespace Fixture
