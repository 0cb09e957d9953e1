#pragma once

#include <stdlib.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"

namespace Fixture {

// Stands in for the system's temporary folder while it lives, so that a test sees every
// working folder that is made and every one that is left behind.
class PrivateTemporaryFolder {
 public:
  PrivateTemporaryFolder() {
    if (const char* former = ::getenv("TMPDIR")) former_ = former;
    ::setenv("TMPDIR", folder_.path().c_str(), 1);
  }
  ~PrivateTemporaryFolder() {
    if (former_) {
      ::setenv("TMPDIR", former_->c_str(), 1);
    } else {
      ::unsetenv("TMPDIR");
    }
  }
  PrivateTemporaryFolder(const PrivateTemporaryFolder&) = delete;
  PrivateTemporaryFolder& operator=(const PrivateTemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return folder_.path(); }

  // The names of what stands in it now.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
      found.push_back(entry.path().filename().string());
    }
    return found;
  }

 private:
  TemporaryDirectory folder_;
  std::optional<std::string> former_;
};

}  // namespace Fixture
