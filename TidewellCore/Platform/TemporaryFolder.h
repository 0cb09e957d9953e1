#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// A folder of its own under the system's temporary folder, readable by this
// user alone (mode 0700), removed with all it holds when its owner goes.
class TemporaryFolder {
 public:
  // Named `prefix` + a random UUID in upper case.
  explicit TemporaryFolder(std::string_view prefix);
  ~TemporaryFolder();
  TemporaryFolder(TemporaryFolder&& other) noexcept;
  TemporaryFolder& operator=(TemporaryFolder&& other) noexcept;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};
