#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/Export/PlannedChat.h"

namespace FormerFolders {

// Removes the removable ones that now hold nothing more than transcripts. What cannot be removed stays.
void removeEmptied(const std::vector<PlannedChat>& chats, const std::filesystem::path& contentRoot);

// What is remembered for the chats of the export under other JIDs, of folders that hold more than that, or cannot be
// looked at.
FolderAssignment stillFull(const std::vector<PlannedChat>& chats, const std::filesystem::path& contentRoot);

}  // namespace FormerFolders
