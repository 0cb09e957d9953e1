#pragma once

#include <filesystem>

// The shape of an export's destination: all content in its folder "messages"
// (the content root), and the archive's page beside that.
namespace ExportLayout {

// Makes the content root, with "_viewer" in it by which it is recognised, and
// returns it. A "messages" that is not an export's is moved aside; the folders
// of an older export without a content root are moved into it; working files
// of an interrupted export are removed. `untouched` (the backup), and whatever
// holds it, stays where it is. Throws what the file system reports.
std::filesystem::path prepare(const std::filesystem::path& destination, const std::filesystem::path& untouched);

// Removes what interrupted runs left of files that they were writing.
void removePartials(const std::filesystem::path& destination, const std::filesystem::path& contentRoot);

// The content root of a destination that may be an older export, or the content root itself.
std::filesystem::path resolveContentRoot(const std::filesystem::path& destination);
bool looksLikeContentRoot(const std::filesystem::path& folder);
// Whether a folder bears the mark that every content root has: "_viewer".
bool isMarked(const std::filesystem::path& folder);
// Where the archive's data files are, or would be.
std::filesystem::path viewerDataDirectory(const std::filesystem::path& destination);

}  // namespace ExportLayout
