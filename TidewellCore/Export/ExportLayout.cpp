#include "TidewellCore/Export/ExportLayout.h"

#include <algorithm>
#include <string>
#include <vector>

#include "TidewellCore/Export/FolderAllocator.h"
#include "TidewellCore/Export/FolderManifest.h"
#include "TidewellCore/Export/MergeMove.h"
#include "TidewellCore/Export/NamingMemory.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
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

// A backup, or a folder above one, must never be moved while it is being read.
bool holdsBackup(const fs::path& folder, const fs::path& backup) {
  return Files::exists(folder / "Manifest.plist") || Files::isWithin(backup, folder);
}

void moveForeignContentAside(const fs::path& destination, const fs::path& untouched) {
  const fs::path content = destination / FolderNames::content;
  if (!Files::isFolder(content) || ExportLayout::isMarked(content)) return;
  if (holdsBackup(content, untouched)) failAsOccupied(content);
  UsedNames used = MergeMove::usedNames(destination);
  used.take(FolderNames::content);
  while (!Files::renameToFree(content, destination / used.uniquify(asideName))) continue;
}

// The root appears with its mark in one step, so that no interruption leaves
// one that the next export would take for somebody else's.
void makeContentRoot(const fs::path& destination) {
  const fs::path content = destination / FolderNames::content;
  if (Files::isFolder(content)) return;
  const fs::path partial = destination / Files::partialName();
  fs::create_directories(partial / FolderNames::viewer);
  if (Files::renameToFree(partial, content)) return;
  fs::remove_all(partial);
  failAsOccupied(content);
}

bool isOlderViewer(const Files::Entry& entry) {
  return entry.isFolder && Text::lowercased(entry.name) == FolderNames::viewer;
}

bool isMemoryName(std::string_view name) { return name == FolderManifest::fileName || name == NamingMemory::fileName; }

bool isOlderMemory(const Files::Entry& entry) { return !entry.isFolder && isMemoryName(entry.name); }

bool hasSignOfOlderExport(const std::vector<Files::Entry>& entries) {
  return std::ranges::any_of(entries, isOlderViewer) || std::ranges::any_of(entries, isOlderMemory);
}

bool isExportsOwnFile(const Files::Entry& entry) {
  if (entry.isFolder) return false;
  return entry.name == FolderNames::textTranscript || entry.name == FolderNames::htmlTranscript ||
         FileNaming::hasExportStamp(entry.name);
}

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
    if (holdsBackup(destination / entry.name, untouched)) return false;
    return isOlderExport || std::ranges::any_of(Files::listVisible(destination / entry.name), isExportsOwnFile);
  }
};

void removePartials(const fs::path& folder) {
  std::error_code ignored;  // what cannot be listed or removed harms nothing
  for (fs::directory_iterator entry(folder, ignored), end; entry != end; entry.increment(ignored)) {
    const std::string name = PathText::text(entry->path().filename());
    if (name.starts_with(Files::partialPrefix)) fs::remove_all(entry->path(), ignored);
  }
}

void removeAllPartials(const fs::path& destination, const fs::path& content) {
  removePartials(destination);
  removePartials(content);
  removePartials(content / FolderNames::viewer);
  removePartials(content / FolderNames::viewer / FolderNames::viewerData);
  removePartials(content / FolderNames::avatars);
  for (const std::string& folder : FolderAllocator::existingChatFolders(content)) removePartials(content / folder);
}

}  // namespace

fs::path ExportLayout::prepare(const fs::path& destination, const fs::path& untouched) {
  fs::create_directories(destination);
  moveForeignContentAside(destination, untouched);
  makeContentRoot(destination);
  const fs::path content = destination / FolderNames::content;
  removeAllPartials(destination, content);
  std::vector<Files::Entry> entries = Files::list(destination);
  // A link is none of an export's making, and may lead elsewhere once it is moved.
  std::erase_if(entries, [&](const Files::Entry& entry) { return fs::is_symlink(destination / entry.name); });
  const Migration migration{.destination = destination,
                            .content = content,
                            .untouched = untouched,
                            .isOlderExport = hasSignOfOlderExport(entries)};
  migration.run(entries);
  return content;
}

fs::path ExportLayout::resolveContentRoot(const fs::path& destination) {
  if (looksLikeContentRoot(destination)) return destination;
  const fs::path content = destination / FolderNames::content;
  return Files::isFolder(content) ? content : destination;
}

bool ExportLayout::isMarked(const fs::path& folder) { return Files::isFolder(folder / FolderNames::viewer); }

bool ExportLayout::looksLikeContentRoot(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = PathText::text(entry->path().filename());
    const std::string lower = Text::lowercased(name);
    if (lower == FolderNames::viewer || lower == FolderNames::avatars || isMemoryName(name)) return true;
  }
  return !FolderAllocator::existingChatFolders(folder).empty();
}

fs::path ExportLayout::viewerDataDirectory(const fs::path& destination) {
  const auto dataIn = [](const fs::path& root) { return root / FolderNames::viewer / FolderNames::viewerData; };
  for (const fs::path& root : {destination, destination / FolderNames::content}) {
    if (Files::exists(dataIn(root) / FolderNames::archiveChats)) return dataIn(root);
  }
  return dataIn(resolveContentRoot(destination));
}
