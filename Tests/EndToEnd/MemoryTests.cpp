#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <functional>
#include <string>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* ana = "5511900001111@s.whatsapp.net";
constexpr const char* password = "Zebra-Kümmel-4981";
constexpr const char* messageText = "A text that the export has in its memory";

// The password in UTF-16 as well, as a toolkit would have it.
std::string utf16Of(const std::string& utf8) {
  std::string result;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto first = static_cast<unsigned char>(utf8[i]);
    const bool isPair = first >= 0x80;  // nothing longer stands in the password
    const unsigned unit = isPair ? (first & 0x1Fu) << 6 | (static_cast<unsigned char>(utf8[++i]) & 0x3Fu) : first;
    result += static_cast<char>(unit & 0xFF);
    result += static_cast<char>(unit >> 8);
  }
  return result;
}

// All that a process has in its memory and that may be read; empty when the machine does not let us.
std::string memoryOf(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  const int file = ::open((folder + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  std::ifstream maps(folder + "/maps");
  std::string memory;
  for (std::string line; std::getline(maps, line);) {
    std::size_t end = 0;
    const std::size_t from = std::stoull(line, &end, 16);
    const std::size_t to = std::stoull(line.substr(end + 1), nullptr, 16);
    // A sanitizer sets aside more addresses than there is memory in the world.
    constexpr std::size_t largest = std::size_t{256} << 20;
    if (to - from > largest) continue;
    std::string region(to - from, '\0');
    const ssize_t count = ::pread(file, region.data(), region.size(), static_cast<off_t>(from));
    if (count > 0) memory.append(region.data(), static_cast<std::size_t>(count));
  }
  ::close(file);
  return memory;
}

bool holds(const std::string& memory, const std::string& text) {
  const std::boyer_moore_searcher searcher(text.begin(), text.end());
  return std::search(memory.begin(), memory.end(), searcher) != memory.end();
}

std::string softLimitOfCores(pid_t process) {
  std::ifstream limits("/proc/" + std::to_string(process) + "/limits");
  for (std::string line; std::getline(limits, line);) {
    if (line.starts_with("Max core file size")) return line.substr(26, line.find(' ', 26) - 26);
  }
  return "?";
}

// An export of an encrypted backup that is halted while it copies.
class Memory : public testing::Test {
 protected:
  Memory() {
    Fixture::BackupContents contents{
        .encryption = Fixture::Encryption{.keyBag = {.password = password, .doubleIterations = 100}},
        .whatsApp = {.chats = {{.jid = ana, .name = "Ana"}},
                     .messages = {{.chat = 1, .date = 700000000, .text = messageText}}}};
    for (int i = 0; i < 400; ++i) {
      contents.whatsApp.mediaFiles.push_back(
          {.localPath = Fixture::mediaPath(ana, "ab-photo" + std::to_string(i), "jpg"),
           .content = Fixture::Bytes(100'000, 7),
           .message = 1});
    }
    Fixture::writeBackup(contents, commandLine_ / "device");
    Fixture::writeFile(commandLine_ / "secret.txt", password);
  }

  void haltWhileCopying(const std::function<void(pid_t)>& look) {
    const Finished finished = commandLine_.runAnd(
        {"export", "device", "saved", "--password-file", "secret.txt"}, "Copying media", [&](pid_t child) {
          ::kill(child, SIGSTOP);
          look(child);
          EXPECT_FALSE(fs::exists(commandLine_ / "saved/index.html")) << "it had copied everything already";
          ::kill(child, SIGCONT);
        });
    EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  }

  const CommandLine commandLine_;
};

TEST_F(Memory, HoldsNoPasswordWhileTheExportCopies) {
  std::string memory;
  haltWhileCopying([&](pid_t child) { memory = memoryOf(child); });
  if (memory.empty()) GTEST_SKIP() << "only root may read this memory; run the test as root";
  EXPECT_TRUE(holds(memory, messageText)) << "the test does not see what is there";
  EXPECT_TRUE(holds(memory, "secret.txt")) << "the test does not see what is there";
  EXPECT_FALSE(holds(memory, password));
  EXPECT_FALSE(holds(memory, utf16Of(password)));
}

TEST_F(Memory, IsWrittenIntoNoCoreDumpWhileKeysAreInUse) {
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_CORE, &former), 0);
  if (former.rlim_max == 0) GTEST_SKIP() << "this machine allows no core dumps at all";
  const rlimit allowed{.rlim_cur = former.rlim_max, .rlim_max = former.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_CORE, &allowed), 0);
  std::string limit;
  haltWhileCopying([&](pid_t child) { limit = softLimitOfCores(child); });
  ASSERT_EQ(::setrlimit(RLIMIT_CORE, &former), 0);
  EXPECT_EQ(limit, "0");
}

}  // namespace
