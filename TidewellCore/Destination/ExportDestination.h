#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace ExportDestination {

// The folder to offer before the user chooses one: the last one, else the desktop,
// else the home folder; absent when none of them is a folder.
std::optional<std::filesystem::path> resolvedDefault(const std::optional<std::string>& lastPath,
                                                     const std::filesystem::path& home);

// The destination that somebody means who names `folder`: the export's own
// folder "messages" means the export above it. Any other folder is meant itself.
std::filesystem::path meant(const std::filesystem::path& folder);

}  // namespace ExportDestination
