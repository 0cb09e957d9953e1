#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/PortableNames.h"

// Which folder each chat of an export has: the name of a folder in the content root.
using ChatFolders = std::map<CanonicalJID, std::string>;

// Gives every chat a folder of its own, the same at every export.
namespace FolderAllocator {

// The keys of the file names that each folder on disk holds, each once, by the folder's name. Good as long as whoever
// looked at the folders.
using FolderContents = std::map<std::string, std::vector<std::string_view>>;
// The names that an export gives the files of each chat, by JID.
using PlannedNames = std::map<CanonicalJID, std::vector<std::string>>;

// What `assign` decides from. No two names are compared but by their key.
struct Choice {
  std::vector<CanonicalJID> jids;
  FolderAssignment persisted;
  FolderContents existing;
  PlannedNames exportFileNames;
  std::function<std::string(const CanonicalJID& jid)> desiredName;
  std::function<std::vector<std::string>(const CanonicalJID& jid)> historicalNames;
  std::function<bool(const std::string& folder, const CanonicalJID& jid)> canAdopt;
  // The keys of folders that no chat may adopt, whatever `canAdopt` says.
  std::set<std::string> kept;
  NameForm nameForm = NameForm::plain;  // of every folder given
};

// In this order: the folder remembered; the folder that already holds most of
// the chat's files; a folder with a name that the chat has or had; a new one.
// Throws TidewellError::cancelled.
ChatFolders assign(const Choice& choice, const CancellationCheck& isCancelled = {});

// `assign` with the names that a backup's chats have and had. A folder
// remembered for a chat that this backup lacks stays that chat's.
struct Wish {
  PlannedNames exportFileNames;
  FolderContents existing;
  FolderAssignment persisted;
  NameForm nameForm = NameForm::plain;
};
ChatFolders allocate(Wish wish, const ChatStorageSnapshot& snapshot, const CancellationCheck& isCancelled = {});

// The folders of a content root that may be chats', in ascending order; none when it is missing.
std::vector<std::string> existingChatFolders(const std::filesystem::path& contentRoot);
bool isReserved(std::string_view folder);
// Whether a JID is all or part of its name.
bool isNamedLikeJID(std::string_view folder);
// Named after a JID, or with nothing to read in its name.
bool isLegacyFolderName(std::string_view folder);
// A folder named after a JID belongs to the chat of that JID alone.
bool isAdoptableFolder(std::string_view folder, std::string_view jid);
// Names that earlier exports may have given a chat's folder.
std::vector<std::string> historicalNames(std::string_view jid, const ChatStorageSnapshot& snapshot);
// `persisted` with an entry for both forms of a chat's JID, phone and LID.
FolderAssignment expandPersisted(FolderAssignment persisted, const std::vector<CanonicalJID>& jids,
                                 const ChatStorageSnapshot& snapshot);

}  // namespace FolderAllocator
