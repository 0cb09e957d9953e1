#include "TidewellCore/Export/LibraryFolders.h"

namespace {

enum class Fitness { none, one, ofNow, ofPages };

Fitness fitnessOf(const std::string& jid, const std::string& folder, const KeptChat& chat, const Renderings& known) {
  const auto pages = known.chats.find(chat.id);
  if (pages != known.chats.end() && pages->second.folder == folder) return Fitness::ofPages;
  return jid == chat.jid ? Fitness::ofNow : Fitness::one;
}

}  // namespace

LibraryFolders::Folders LibraryFolders::planned(const Library& library, const std::vector<PlannedChat>& chats) {
  Folders folders(library.chats().size());
  for (const PlannedChat& chat : chats) {
    for (const std::size_t place : library.chatsOf({chat.jid.text()})) {
      if (folders[place].empty() || chat.isInExport) folders[place] = chat.folder;
    }
  }
  return folders;
}

LibraryFolders::Folders LibraryFolders::remembered(const Library& library, const FolderAssignment& remembered,
                                                   const Renderings& known) {
  Folders folders(library.chats().size());
  std::vector<Fitness> best(folders.size(), Fitness::none);
  for (const auto& [jid, folder] : remembered) {
    for (const std::size_t place : library.chatsOf({jid})) {
      const Fitness fitness = fitnessOf(jid, folder, library.chats()[place], known);
      if (fitness <= best[place]) continue;
      best[place] = fitness;
      folders[place] = folder;
    }
  }
  return folders;
}

FolderAssignment LibraryFolders::withKnownChats(const Library& library, const ChatStorageSnapshot& snapshot,
                                                FolderAssignment remembered) {
  const Folders folders = LibraryFolders::remembered(library, remembered, {});
  for (const ChatStorageSnapshot::Chat& chat : snapshot.chats()) {
    for (const std::size_t place : library.chatsOf({chat.jid.text()})) {
      if (!folders[place].empty()) remembered.emplace(chat.jid.text(), folders[place]);
    }
  }
  return remembered;
}
