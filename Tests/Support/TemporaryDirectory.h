#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "Tests/Support/Bytes.h"

namespace Fixture {

// A folder of its own under the system's temporary folder, removed with everything in it at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// Both throw std::runtime_error naming the file.
Bytes readFile(const std::filesystem::path& file);
// Makes the folders above the file when they are missing.
void writeFile(const std::filesystem::path& file, ByteView content);
void writeFile(const std::filesystem::path& file, std::string_view text);

// All that a change to an entry would show in. Links are not followed.
struct TreeEntry {
  std::filesystem::file_type type = std::filesystem::file_type::none;
  std::uintmax_t size = 0;
  // Of a regular file's content or of a link's target; empty otherwise.
  std::string sha1;
  std::filesystem::file_time_type modified;
  bool operator==(const TreeEntry&) const = default;
};

// Every entry below `root`, by its path relative to it: equal before and after when nothing was touched.
std::map<std::string, TreeEntry> treeSnapshot(const std::filesystem::path& root);

}  // namespace Fixture
