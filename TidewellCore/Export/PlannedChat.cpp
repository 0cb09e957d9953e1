#include "TidewellCore/Export/PlannedChat.h"

namespace {

void take(std::string_view jid, const std::string& folder, PlannedChat& chat) {
  chat.remembered.emplace(jid, folder);
  if (!chat.isInExport && chat.jid == jid) chat.folder = folder;
}

}  // namespace

std::vector<PlannedChat> PlannedChats::of(const ChatFolders& given, const FolderAssignment& remembered,
                                          const ChatStorageSnapshot& snapshot) {
  std::map<CanonicalJID, PlannedChat> byJID;
  for (const auto& [jid, folder] : given) {
    byJID.emplace(jid, PlannedChat{.jid = jid, .isInExport = true, .folder = folder});
  }
  for (const auto& [jid, folder] : remembered) {
    const CanonicalJID canonical = snapshot.canonicalChatJID(jid);
    take(jid, folder, byJID.try_emplace(canonical, PlannedChat{.jid = canonical}).first->second);
  }
  std::vector<PlannedChat> chats;
  chats.reserve(byJID.size());
  for (auto& [jid, chat] : byJID) chats.push_back(std::move(chat));
  return chats;
}

ChatFolders PlannedChats::folders(const std::vector<PlannedChat>& chats) {
  ChatFolders folders;
  for (const PlannedChat& chat : chats) {
    if (chat.isInExport) folders.emplace(chat.jid, chat.folder);
  }
  return folders;
}

FolderAssignment PlannedChats::toRemember(const std::vector<PlannedChat>& chats) {
  FolderAssignment all;
  for (const PlannedChat& chat : chats) {
    if (chat.isInExport) {
      all.emplace(chat.jid.text(), chat.folder);
    } else {
      all.insert(chat.remembered.begin(), chat.remembered.end());
    }
  }
  return all;
}

FolderAssignment PlannedChats::toRememberMeanwhile(const std::vector<PlannedChat>& chats) {
  FolderAssignment all = toRemember(chats);
  for (const PlannedChat& chat : chats) all.insert(chat.remembered.begin(), chat.remembered.end());
  return all;
}
