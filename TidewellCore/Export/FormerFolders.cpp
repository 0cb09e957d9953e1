#include "TidewellCore/Export/FormerFolders.h"

#include <algorithm>

#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

bool isMissedByNobody(const Files::Entry& entry) {
  const OwnFiles::Kind kind = OwnFiles::kindOf(entry.name);
  return !entry.isFolder && (kind == OwnFiles::Kind::transcript || kind == OwnFiles::Kind::fileManagers);
}

bool isFull(const fs::path& folder) try {
  return Files::kindOf(folder) != Files::Kind::nothing && !std::ranges::all_of(Files::list(folder), isMissedByNobody);
} catch (const fs::filesystem_error&) {
  return true;
}

// By the key of its name; null for a folder that is the chat's now, or another's.
const PlannedChat::FormerFolder* formerFolder(const PlannedChat& chat, const std::string& name) {
  const auto found = std::ranges::find_if(chat.formerFolders, [&](const PlannedChat::FormerFolder& folder) {
    return FileNaming::normalizedKey(folder.name) == FileNaming::normalizedKey(name);
  });
  return found == chat.formerFolders.end() ? nullptr : &*found;
}

void removeIfEmptied(const fs::path& folder) {
  const std::vector<Files::Entry> entries = Files::list(folder);
  if (!std::ranges::all_of(entries, isMissedByNobody)) return;
  for (const Files::Entry& entry : entries) Files::remove(folder / entry.name);
  Files::remove(folder);
}

}  // namespace

void FormerFolders::removeEmptied(const std::vector<PlannedChat>& chats, const fs::path& contentRoot) {
  for (const PlannedChat& chat : chats) {
    for (const PlannedChat::FormerFolder& folder : chat.formerFolders) {
      if (!folder.isRemovable) continue;
      try {
        removeIfEmptied(contentRoot / PathText::path(folder.name));
      } catch (const fs::filesystem_error&) {
        // It stays, and harms nothing.
      }
    }
  }
}

FolderAssignment FormerFolders::stillFull(const std::vector<PlannedChat>& chats, const fs::path& contentRoot) {
  FolderAssignment full;
  for (const PlannedChat& chat : chats) {
    if (!chat.isInExport) continue;
    for (const auto& [jid, name] : chat.remembered) {
      const auto* former = formerFolder(chat, name);
      if (former != nullptr && isFull(contentRoot / PathText::path(former->name))) full.emplace(jid, name);
    }
  }
  return full;
}
