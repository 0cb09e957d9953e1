#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

// The identifier of a file: the SHA-1 of its domain, "-" and its path, in hexadecimal (docs/formats/backup.md).
std::string fileIdentifier(std::string_view domain, std::string_view relativePath);

// Where a backup keeps the file of that identifier: in the folder named by its
// first two characters. Absent for an identifier that is not fit to be a path.
std::optional<std::filesystem::path> storedFileLocation(const std::filesystem::path& backup, std::string_view fileID);
