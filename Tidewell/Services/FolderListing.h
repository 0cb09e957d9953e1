#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// The folders within a folder, as a folder chooser lists them.
struct FolderListing {
  std::filesystem::path folder;
  // As people sort them: whatever the case, and 2 before 10. Hidden ones are left out.
  std::vector<std::filesystem::path> names;
  bool isReadable = true;

  bool operator==(const FolderListing&) const = default;
};

enum class FolderFault { noSuchFolder, noName, nameOfSeveralFolders, nameTaken, notPermitted, notCreated };

// Nothing here throws; all of it takes as long as the volume does.
namespace Folders {

// What could be read of it, when it cannot be read at all, or to its end.
FolderListing listing(const std::filesystem::path& folder);

// The folder itself when it exists, else the nearest one above it that does.
std::filesystem::path nearest(std::filesystem::path folder);

// A folder as people type it: "~" is the home folder, and what does not start at the root starts at `shown`.
std::filesystem::path typed(const std::string& text, const std::filesystem::path& shown,
                            const std::filesystem::path& home);

// Why it could not be made; absent when it was.
std::optional<FolderFault> create(const std::filesystem::path& parent, const std::string& name);

}  // namespace Folders
