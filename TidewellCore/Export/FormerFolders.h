#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/Export/PlannedChat.h"

namespace FormerFolders {

// Removes the removable ones that now hold nothing more than transcripts. What cannot be removed stays.
void removeEmptied(const std::vector<PlannedChat>& chats, const std::filesystem::path& contentRoot);

}  // namespace FormerFolders
