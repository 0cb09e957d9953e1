#include "TidewellCore/Destination/ExportLayout.h"

#include <algorithm>
#include <string>
#include <vector>

#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/Destination/MergeMove.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/UsedNames.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view asideName = "Messages";

// "Messages-2", "Messages-3", …: the names given to what was moved aside.
bool isAsideName(const std::string& name) {
  const std::string prefix = FileNaming::normalizedKey(asideName) + "-";
  const std::string key = FileNaming::normalizedKey(name);
  return key.size() > prefix.size() && key.starts_with(prefix) &&
         key.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
}

[[noreturn]] void failAsOccupied(const fs::path& content) {
  throw fs::filesystem_error("Something else stands in the export's place", content,
                             std::make_error_code(std::errc::file_exists));
}

// Whether a folder, and no link, which may be moved alone, is a backup or has one so many levels below.
bool holdsAnyBackup(const fs::path& folder, int levels) {
  if (Files::kindOf(folder) != Files::Kind::folder) return false;
  if (Files::kindOf(folder / "Manifest.plist") != Files::Kind::nothing) return true;
  return levels > 0 && std::ranges::any_of(Files::listVisible(folder), [&](const Files::Entry& entry) {
           return entry.isFolder && holdsAnyBackup(folder / PathText::path(entry.name), levels - 1);
         });
}

// Somebody's backups, as in "MobileSync/Backup/<device>", must never be moved, and
// least of all the one that is being read.
bool holdsBackup(const fs::path& folder, const fs::path& backup) {
  constexpr int levels =
      6;  // "Library/Application Support/MobileSync/Backup/<device>", and somebody's own folder above it
  return Files::isWithin(backup, folder) || holdsAnyBackup(folder, levels);
}

// An export's own, whatever a share may say of its mark for a moment.
bool holdsMemory(const fs::path& content) {
  return std::ranges::any_of(OwnFiles::memories,
                             [&](const char* memory) { return Files::kindOf(content / memory) == Files::Kind::file; });
}

void moveForeignContentAside(const fs::path& destination, const fs::path& untouched) {
  const fs::path content = destination / FolderNames::content;
  const Files::Kind kind = Files::kindOf(content);
  const bool leadsToAFolder = kind == Files::Kind::folder || kind == Files::Kind::link;
  if (!leadsToAFolder || ExportLayout::isMarked(content)) return;
  if (kind == Files::Kind::folder && holdsMemory(content)) return;
  if (holdsBackup(content, untouched)) failAsOccupied(content);
  UsedNames used = MergeMove::usedNames(destination);
  used.take(FolderNames::content);
  used.uniquifyUntil(asideName,
                     [&](const std::string& name) { return Files::renameToFree(content, destination / name); });
}

// The root appears with its mark in one step, so that no interruption leaves
// one that the next export would take for somebody else's.
void makeContentRoot(const fs::path& destination) {
  const fs::path content = destination / FolderNames::content;
  if (Files::kindOf(content) == Files::Kind::folder) return MakeRoom::forFolder(content / FolderNames::viewer);
  const fs::path partial = destination / Files::partialName();
  Files::makeFolder(partial / FolderNames::viewer);
  if (Files::renameToFree(partial, content)) return;
  Files::removeTree(partial);
  failAsOccupied(content);
}

bool isOlderViewer(const Files::Entry& entry) {
  return entry.isFolder && Text::lowercased(entry.name) == FolderNames::viewer;
}

bool isMemoryName(std::string_view name) { return OwnFiles::kindOf(name) == OwnFiles::Kind::memory; }

bool isOlderMemory(const Files::Entry& entry) { return !entry.isFolder && isMemoryName(entry.name); }

bool hasSignOfOlderExport(const std::vector<Files::Entry>& entries) {
  return std::ranges::any_of(entries, isOlderViewer) || std::ranges::any_of(entries, isOlderMemory);
}

bool isExportsOwnFile(const Files::Entry& entry) { return !entry.isFolder && OwnFiles::isMadeForChats(entry.name); }

struct Migration {
  fs::path destination;
  fs::path content;
  fs::path untouched;
  bool isOlderExport = false;

  // The signs of an older export move last, so that an interrupted migration is continued.
  void run(const std::vector<Files::Entry>& entries) const {
    for (const Files::Entry& entry : entries) {
      if (isChatFolder(entry)) move(entry, entry.name);
    }
    for (const Files::Entry& entry : entries) {
      if (isOlderViewer(entry)) move(entry, FolderNames::viewer);
      if (isOlderMemory(entry)) move(entry, entry.name);
    }
  }

  void move(const Files::Entry& entry, const std::string& name) const {
    MergeMove::move(destination / entry.name, content / name);
  }

  bool isChatFolder(const Files::Entry& entry) const {
    if (!entry.isFolder || entry.name.starts_with('.')) return false;
    if (FolderAllocator::isReserved(entry.name) || isAsideName(entry.name)) return false;
    return mayBeMoved(destination / entry.name);
  }

  // What this user may not look into is none of an export's, as a drive's own "lost+found". Backups are looked
  // for in what would be moved alone: there may be a whole computer in the destination.
  bool mayBeMoved(const fs::path& folder) const try {
    const bool isOurs = isOlderExport || std::ranges::any_of(Files::listVisible(folder), isExportsOwnFile);
    return isOurs && !holdsBackup(folder, untouched);
  } catch (const fs::filesystem_error& error) {
    if (error.code() == std::errc::permission_denied || error.code() == std::errc::operation_not_permitted)
      return false;
    throw;
  }
};

void removePartialsIn(const fs::path& folder) try {
  for (const Files::Entry& entry : Files::list(folder)) {
    const bool isPartial = OwnFiles::kindOf(entry.name) == OwnFiles::Kind::partial;
    if (isPartial) Files::removeTree(folder / PathText::path(entry.name));
  }
} catch (const fs::filesystem_error&) {
  // What cannot be listed or removed harms nothing.
}

// Something that is no file would keep the export from remembering anything.
void freeMemories(const fs::path& content) {
  for (const char* name : OwnFiles::memories) {
    if (Files::kindOf(content / name) == Files::Kind::folder) MakeRoom::at(content / name);
  }
}

}  // namespace

fs::path ExportLayout::prepare(const fs::path& destination, const fs::path& untouched) {
  Files::makeFolder(destination);
  moveForeignContentAside(destination, untouched);
  makeContentRoot(destination);
  const fs::path content = destination / FolderNames::content;
  freeMemories(content);
  removePartials(destination, content);
  std::vector<Files::Entry> entries = Files::list(destination);
  // A link is none of an export's making, and may lead elsewhere once it is moved.
  std::erase_if(entries, [&](const Files::Entry& entry) {
    return Files::kindOf(destination / PathText::path(entry.name)) == Files::Kind::link;
  });
  const Migration migration{.destination = destination,
                            .content = content,
                            .untouched = untouched,
                            .isOlderExport = hasSignOfOlderExport(entries)};
  migration.run(entries);
  return content;
}

void ExportLayout::removePartials(const fs::path& destination, const fs::path& contentRoot) {
  removePartialsIn(destination);
  removePartialsIn(contentRoot);
  removePartialsIn(contentRoot / FolderNames::viewer);
  removePartialsIn(contentRoot / FolderNames::viewer / FolderNames::viewerData);
  removePartialsIn(contentRoot / FolderNames::avatars);
  for (const std::string& folder : FolderAllocator::existingChatFolders(contentRoot)) {
    removePartialsIn(contentRoot / folder);
  }
}

fs::path ExportLayout::resolveContentRoot(const fs::path& destination) {
  if (looksLikeContentRoot(destination)) return destination;
  const fs::path content = destination / FolderNames::content;
  return Files::kindOf(content) == Files::Kind::nothing ? destination : content;
}

bool ExportLayout::isMarked(const fs::path& folder) {
  const Files::Kind kind = Files::kindOf(folder);
  const bool isFolder = kind == Files::Kind::folder || (kind == Files::Kind::link && Files::isFolder(folder));
  if (!isFolder) return false;
  // A link there was put in the mark's place, where it leads nowhere.
  const Files::Kind mark = Files::kindOf(folder / FolderNames::viewer);
  return mark == Files::Kind::folder || mark == Files::Kind::link;
}

bool ExportLayout::looksLikeContentRoot(const fs::path& folder) {
  if (Files::kindOf(folder) == Files::Kind::nothing) return false;
  for (const Files::Entry& entry : Files::list(folder)) {
    const std::string lower = Text::lowercased(entry.name);
    if (lower == FolderNames::viewer || lower == FolderNames::avatars || isMemoryName(entry.name)) return true;
  }
  return !FolderAllocator::existingChatFolders(folder).empty();
}

fs::path ExportLayout::viewerDataDirectory(const fs::path& destination) {
  const auto dataIn = [](const fs::path& root) { return root / FolderNames::viewer / FolderNames::viewerData; };
  for (const fs::path& root : {destination, destination / FolderNames::content}) {
    if (Files::isThere(dataIn(root) / FolderNames::archiveChats)) return dataIn(root);
  }
  return dataIn(resolveContentRoot(destination));
}
