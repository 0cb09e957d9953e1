#pragma once

#include <filesystem>
#include <vector>

// The folder that holds the application's string tables.
namespace ResourceBundle {

inline constexpr const char* name = "Tidewell_Tidewell.bundle";

// Where it may stand, first choice first, for an executable in that folder: the
// resources beside the executable, the installed data folder, the executable's own folder.
std::vector<std::filesystem::path> searchFolders(const std::filesystem::path& executableFolder);

// The bundle in the first of these folders that has it. Without one the program
// ends with "unable to find bundle named Tidewell_Tidewell".
std::filesystem::path find(const std::vector<std::filesystem::path>& folders);

}  // namespace ResourceBundle
