#pragma once

#include <filesystem>
#include <map>
#include <string>

// Which folder a chat had, as it is remembered: its JID of that time and the name
// of a folder in the content root.
using FolderAssignment = std::map<std::string, std::string>;

// The file in which an export remembers its folders, so that a chat keeps its
// folder when its name changes.
namespace FolderManifest {

inline constexpr const char* fileName = ".tidewell-manifest.json";
inline constexpr const char* viewerFileName = "folders.json";  // a copy in "_viewer"

// Looks in the destination, in its content root and, from a content root, in
// the folder above. Empty when none can be read. Names unfit for a path are left out.
FolderAssignment load(const std::filesystem::path& destination);

// A file that says the same already keeps its date. Throws what writing reports.
void save(const std::filesystem::path& contentRoot, const FolderAssignment& folders);

}  // namespace FolderManifest
