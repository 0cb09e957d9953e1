#include "TidewellCore/Backup/StoredFileLocation.h"

#include <algorithm>

#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::size_t longestFileID = 128;
constexpr std::size_t folderNameCharacters = 2;

bool isHexadecimal(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

// Identifiers come from the file index, which is somebody else's data.
bool isFitForPath(std::string_view fileID) {
  if (fileID.empty() || fileID.size() > longestFileID || fileID.starts_with('.')) return false;
  if (std::ranges::all_of(fileID, isHexadecimal)) return true;  // as all that iPhones write
  return std::ranges::none_of(Text::scalars(fileID), [](char32_t scalar) {
    return scalar == U'/' || scalar == U'\\' || Text::isControl(scalar);
  });
}

}  // namespace

std::string fileIdentifier(std::string_view domain, std::string_view relativePath) {
  const std::string name = std::string(domain).append("-").append(relativePath);
  constexpr std::string_view digits = "0123456789abcdef";
  std::string identifier;
  for (const std::uint8_t byte : sha1(bytesOf(name))) {
    identifier += digits[byte >> 4];
    identifier += digits[byte & 0xF];
  }
  return identifier;
}

std::optional<std::filesystem::path> storedFileLocation(const std::filesystem::path& backup, std::string_view fileID) {
  if (!isFitForPath(fileID)) return std::nullopt;
  std::string place = PathText::text(backup);
  if (!place.ends_with('/')) place += '/';
  place.append(Text::firstCharacters(fileID, folderNameCharacters)).append("/").append(fileID);
  return PathText::path(place);
}
