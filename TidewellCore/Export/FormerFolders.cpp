#include "TidewellCore/Export/FormerFolders.h"

#include <algorithm>

#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

bool isMissedByNobody(const Files::Entry& entry) {
  const OwnFiles::Kind kind = OwnFiles::kindOf(entry.name);
  return !entry.isFolder && (kind == OwnFiles::Kind::transcript || kind == OwnFiles::Kind::fileManagers);
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
