#include "TidewellCore/Backup/StoredFileLocation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::size_t longestFileID = 128;
constexpr std::size_t folderNameCharacters = 2;

// Identifiers come from the file index, which is somebody else's data.
bool isFitForPath(std::string_view fileID) {
  if (fileID.empty() || fileID.size() > longestFileID || fileID.starts_with('.')) return false;
  return std::ranges::none_of(Text::scalars(fileID), [](char32_t scalar) {
    return scalar == U'/' || scalar == U'\\' || Text::isControl(scalar);
  });
}

}  // namespace

std::string fileIdentifier(std::string_view domain, std::string_view relativePath) {
  const std::string name = std::string(domain).append("-").append(relativePath);
  return fmt::format("{:02x}", fmt::join(sha1(bytesOf(name)), ""));
}

std::optional<std::filesystem::path> storedFileLocation(const std::filesystem::path& backup, std::string_view fileID) {
  if (!isFitForPath(fileID)) return std::nullopt;
  return backup / PathText::path(Text::firstCharacters(fileID, folderNameCharacters)) / PathText::path(fileID);
}
