#include "TidewellCore/Platform/TemporaryFolder.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <random>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

// Version 4, variant 1 of RFC 4122.
std::string randomUUID() {
  std::random_device random;
  const auto word = [&] { return static_cast<std::uint32_t>(random()); };
  const std::uint32_t last = word();
  return fmt::format("{:08X}-{:04X}-4{:03X}-{:04X}-{:08X}{:04X}", word(), last >> 16, word() & 0xFFF,
                     0x8000 | (word() & 0x3FFF), word(), last & 0xFFFF);
}

}  // namespace

TemporaryFolder::TemporaryFolder(std::string_view prefix)
    : path_(fs::temp_directory_path() / (std::string(prefix) + randomUUID())) {
  if (::mkdir(path_.c_str(), 0700) == 0) return;
  throw fs::filesystem_error("Could not create a working folder", path_,
                             std::error_code(errno, std::generic_category()));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  if (!path_.empty()) fs::remove_all(path_, ignored);
}

TemporaryFolder::TemporaryFolder(TemporaryFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}

TemporaryFolder& TemporaryFolder::operator=(TemporaryFolder&& other) noexcept {
  std::swap(path_, other.path_);
  return *this;
}
