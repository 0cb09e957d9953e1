#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/Files.h"

// A folder with files, links and FIFOs at wish.
namespace PlatformTest {

inline std::string content(const std::filesystem::path& file) { return std::string(textOf(Fixture::readFile(file))); }

inline std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const Files::Entry& entry : Files::list(folder)) names.push_back(entry.name);
  return names;
}

class FilesTest : public testing::Test {
 protected:
  std::filesystem::path make(const char* name, std::string_view text = "x") const {
    Fixture::writeFile(folder_ / name, text);
    return folder_ / name;
  }
  std::filesystem::path link(const char* name, const char* target) const {
    std::filesystem::create_symlink(target, folder_ / name);
    return folder_ / name;
  }
  std::filesystem::path fifo(const char* name) const {
    EXPECT_EQ(mkfifo((folder_ / name).c_str(), 0600), 0);
    return folder_ / name;
  }
  std::filesystem::path at(const char* name) const { return folder_ / name; }

  const Fixture::TemporaryDirectory folder_;
};

}  // namespace PlatformTest
