#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

// Where a backup keeps the file of that identifier: in the folder named by its
// first two characters. Absent for an identifier that is not fit to be a path.
std::optional<std::filesystem::path> storedFileLocation(const std::filesystem::path& backup, std::string_view fileID);
