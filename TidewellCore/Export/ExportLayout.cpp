#include "TidewellCore/Export/ExportLayout.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "TidewellCore/Export/FolderAllocator.h"
#include "TidewellCore/Export/FolderManifest.h"
#include "TidewellCore/Export/FolderNames.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view asideName = "Messages";

std::set<std::string> keysOf(const std::vector<Files::Entry>& entries) {
  std::set<std::string> keys;
  for (const Files::Entry& entry : entries) keys.insert(FileNaming::normalizedKey(entry.name));
  return keys;
}

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
  if (!Files::isFolder(content) || Files::isFolder(content / FolderNames::viewer)) return;
  if (holdsBackup(content, untouched)) failAsOccupied(content);
  std::set<std::string> used = keysOf(Files::list(destination));
  used.insert(FolderNames::content);
  while (!Files::renameToFree(content, destination / FileNaming::uniquify(asideName, used))) continue;
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

bool isOlderManifest(const Files::Entry& entry) { return !entry.isFolder && entry.name == FolderManifest::fileName; }

bool hasSignOfOlderExport(const std::vector<Files::Entry>& entries) {
  return std::ranges::any_of(entries, isOlderViewer) || std::ranges::any_of(entries, isOlderManifest);
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
      if (isOlderManifest(entry)) move(entry, FolderManifest::fileName);
    }
  }

  void move(const Files::Entry& entry, const std::string& name) const {
    ExportLayout::mergeMove(destination / entry.name, content / name);
  }

  bool isChatFolder(const Files::Entry& entry) const {
    if (!entry.isFolder || entry.name.starts_with('.')) return false;
    if (FolderAllocator::isReserved(entry.name) || isAsideName(entry.name)) return false;
    if (holdsBackup(destination / entry.name, untouched)) return false;
    return isOlderExport || std::ranges::any_of(Files::listVisible(destination / entry.name), isExportsOwnFile);
  }
};

void removePartials(const fs::path& folder) {
  for (const Files::Entry& entry : Files::list(folder)) {
    if (entry.name.starts_with(Files::partialPrefix)) fs::remove_all(folder / entry.name);
  }
}

void removeAllPartials(const fs::path& destination, const fs::path& content) {
  removePartials(destination);
  removePartials(content);
  removePartials(content / FolderNames::viewer);
  for (const std::string& folder : FolderAllocator::existingChatFolders(content)) removePartials(content / folder);
}

// Whether both name one entry of one folder, however it is spelt. Two hard links are two entries.
bool areOnePlace(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  if (a == b) return true;
  if (!fs::equivalent(a, b, ignored)) return false;
  const bool areFiles = Files::isRegularFile(a) && Files::isRegularFile(b);
  return !areFiles || fs::equivalent(a.parent_path(), b.parent_path(), ignored);
}

// A folder itself; a link to one is moved as the link it is.
bool isRealFolder(const fs::path& path) { return fs::is_directory(fs::symlink_status(path)); }

void moveUnderFreeName(const fs::path& from, const fs::path& folder, const std::string& name) {
  std::set<std::string> used = keysOf(Files::list(folder));
  while (!Files::moveToFree(from, folder / FileNaming::uniquify(name, used))) continue;
}

void mergeFolder(const fs::path& from, const fs::path& to) {
  for (const Files::Entry& entry : Files::list(from)) ExportLayout::mergeMove(from / entry.name, to / entry.name);
  fs::remove(from);
}

// Tries a plain move; false when the target is taken or on another volume.
bool moveWhole(const fs::path& from, const fs::path& to) {
  try {
    return isRealFolder(from) ? Files::renameToFree(from, to) : Files::moveToFree(from, to);
  } catch (const fs::filesystem_error& error) {
    if (error.code() != std::errc::cross_device_link || !isRealFolder(from)) throw;
  }
  fs::create_directory(to);
  return false;
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

bool ExportLayout::looksLikeContentRoot(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = PathText::text(entry->path().filename());
    const std::string lower = Text::lowercased(name);
    if (lower == FolderNames::viewer || lower == FolderNames::avatars || name == FolderManifest::fileName) return true;
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

void ExportLayout::mergeMove(const fs::path& from, const fs::path& to) {
  if (areOnePlace(from, to)) return;
  if (moveWhole(from, to)) return;
  if (isRealFolder(from) && isRealFolder(to)) return mergeFolder(from, to);
  const bool areFiles = Files::isRegularFile(from) && Files::isRegularFile(to);
  if (areFiles && Files::haveSameBytes(from, to)) {
    fs::remove(from);
  } else {
    moveUnderFreeName(from, to.parent_path(), PathText::text(to.filename()));
  }
}
