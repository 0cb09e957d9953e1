#pragma once

#include <filesystem>
#include <utility>

// A working file beside the file that it will become, under a hidden name of its
// own. What it has not become when this goes is removed.
class PartialFile {
 public:
  // Makes no file yet.
  explicit PartialFile(const std::filesystem::path& future);
  ~PartialFile();
  PartialFile(PartialFile&& other) noexcept : path_(std::exchange(other.path_, {})) {}
  PartialFile& operator=(PartialFile&&) = delete;

  // Empty once it has become what it was for.
  const std::filesystem::path& path() const { return path_; }
  // To be told when it was renamed.
  void release() { path_.clear(); }

 private:
  std::filesystem::path path_;
};
