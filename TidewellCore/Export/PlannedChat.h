#pragma once

#include <string>
#include <vector>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/Destination/FolderManifest.h"

// A chat, of this export or of earlier ones alone, and its folders in the content root.
struct PlannedChat {
  // One that an earlier export may have left files of it in.
  struct FormerFolder {
    std::string name;          // as it is spelt on disk
    bool isRemovable = false;  // once it is emptied: it is no other chat's

    bool operator==(const FormerFolder&) const = default;
  };

  CanonicalJID jid;
  bool isInExport = false;
  // Of this export, else that was remembered under this very JID; empty when none was.
  std::string folder;
  std::vector<FormerFolder> formerFolders;  // in the order in which they are searched
  FolderAssignment remembered;              // by earlier exports, under its JIDs of those times

  bool operator==(const PlannedChat&) const = default;
};

// Chats in ascending order of their JIDs.
namespace PlannedChats {

// The chats that this export gave folders, and those that are remembered; without their former folders.
std::vector<PlannedChat> of(const ChatFolders& given, const FolderAssignment& remembered,
                            const ChatStorageSnapshot& snapshot);

// Of the chats of this export.
ChatFolders folders(const std::vector<PlannedChat>& chats);

// What is to be remembered: of this export's chats the folders that they have now, of the others what was.
FolderAssignment toRemember(const std::vector<PlannedChat>& chats);
// The same, and what was remembered under other JIDs of this export's chats, until all has moved to where it is now.
FolderAssignment toRememberMeanwhile(const std::vector<PlannedChat>& chats);

}  // namespace PlannedChats
