#pragma once

#include <filesystem>
#include <string_view>

// Makes places free that an export needs and somebody else took. Nothing is
// lost: what stands there gets the first free of the names "NAME-2", "NAME-3", …
// Failures are std::filesystem::filesystem_error.
namespace MakeRoom {

// Renames what stands at `path`; nothing need stand there.
void at(const std::filesystem::path& path);
// Whether the first of those names is taken.
bool wasMadeAt(const std::filesystem::path& path);
// Makes a folder, and those above it, where they are missing. A link in its
// place, below a RootFolder, makes room, and so does anything else that is no folder.
void forFolder(const std::filesystem::path& path);
// As Files::writeWhenDifferent; a folder in the file's place makes room.
bool write(const std::filesystem::path& path, std::string_view content);

}  // namespace MakeRoom
