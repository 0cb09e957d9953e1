#pragma once

#include <array>
#include <string_view>

#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Destination/NamingMemory.h"
#include "TidewellCore/Library/LibraryFile.h"

// Which of a destination's files are of the export's own making, told by their
// names as they are spelt on disk.
namespace OwnFiles {

// In the content root: what an export left behind that changed something.
inline constexpr const char* receipt = ".tidewell-receipt.json";
// In the content root: what exports remember for those that follow.
inline constexpr std::array memories{FolderManifest::fileName, NamingMemory::fileName, LibraryFile::fileName, receipt};
// In the content root: what a clean-up has begun and not finished.
inline constexpr const char* cleanUpJournal = ".tidewell-dedupe.json";

enum class Kind {
  none,         // a medium, or somebody's
  transcript,   // of a chat, in its folder, for people or for programs
  memory,       // one of `memories`
  journal,      // the above, and that of the library's transaction
  partial,      // a working file of a run that did not end itself
  fileManagers  // ".DS_Store", which file managers leave in any folder and nobody misses
};
Kind kindOf(std::string_view name);

// Whether an export puts files of this name into chats' folders: transcripts, and media with its stamp.
bool isMadeForChats(std::string_view name);

}  // namespace OwnFiles
