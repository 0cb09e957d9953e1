#pragma once

#include <filesystem>
#include <functional>

// Keeps a folder that the user chose open to this application for as long as it
// lives. Destroyed on the interface thread.
class ScopedAccess {
 public:
  // `accessed` is what the system answered when access to `url` was started.
  ScopedAccess(std::filesystem::path url, bool accessed, std::function<void(const std::filesystem::path&)> stopAccess);
  ~ScopedAccess();
  ScopedAccess(const ScopedAccess&) = delete;
  ScopedAccess& operator=(const ScopedAccess&) = delete;

  const std::filesystem::path& url() const { return url_; }
  bool accessed() const { return accessed_; }

 private:
  std::filesystem::path url_;
  bool accessed_;
  std::function<void(const std::filesystem::path&)> stopAccess_;
};
