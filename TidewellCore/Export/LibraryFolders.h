#pragma once

#include <string>
#include <vector>

#include "TidewellCore/Export/PlannedChat.h"
#include "TidewellCore/Library/Library.h"
#include "TidewellCore/Library/Renderings.h"

// Which folder each chat of a library has: names in the content root, in the library's order; empty for a chat without.
namespace LibraryFolders {

using Folders = std::vector<std::string>;

// Those that an export gives. Where a backup knows one chat as several, those of this export come first.
Folders planned(const Library& library, const std::vector<PlannedChat>& chats);

// Those that exports are remembered to have given. Of several, the one in which the chat's pages are known to be
// comes first, then that of the JID by which the chat is known now.
Folders remembered(const Library& library, const FolderAssignment& remembered, const Renderings& known);

// `remembered`, and for chats of a backup that it does not have the folder of the chat that the library knows to be the
// same: a backup may know less of who is who than an earlier one.
FolderAssignment withKnownChats(const Library& library, const ChatStorageSnapshot& snapshot,
                                FolderAssignment remembered);

}  // namespace LibraryFolders
