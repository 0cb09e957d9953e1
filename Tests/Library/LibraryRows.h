#pragma once

#include <filesystem>
#include <string>

namespace LibraryRows {

// Every row of an export's library, a line each, but for the moments at which it was written: two libraries that
// keep the same have the same. Empty when there is none.
std::string of(const std::filesystem::path& contentRoot);

}  // namespace LibraryRows
