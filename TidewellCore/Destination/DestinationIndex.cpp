#include "TidewellCore/Destination/DestinationIndex.h"

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

DestinationIndex::Files filesOf(const fs::path& folder, CancellationPoint& cancellation) {
  DestinationIndex::Files files;
  for (auto& [name, size] : Files::listFiles(folder)) {
    cancellation.step();
    files.insert_or_assign(FileNaming::normalizedKey(name), DestinationIndex::FileEntry{name, size});
  }
  return files;
}

}  // namespace

DestinationIndex DestinationIndex::load(const fs::path& contentRoot, const CancellationCheck& isCancelled) {
  DestinationIndex index{.destination = contentRoot};
  CancellationPoint cancellation(isCancelled);
  for (const std::string& folder : FolderAllocator::existingChatFolders(contentRoot)) {
    cancellation.step();
    index.folderByKey.emplace(FileNaming::normalizedKey(folder), folder);
    try {
      index.filesByFolder.emplace(folder, filesOf(contentRoot / PathText::path(folder), cancellation));
    } catch (const fs::filesystem_error&) {
      index.filesByFolder.emplace(folder, Files{});
      index.unreadableFolders.insert(folder);
    }
  }
  return index;
}

std::optional<std::string> DestinationIndex::diskFolder(std::string_view matching) const {
  const auto found = folderByKey.find(FileNaming::normalizedKey(matching));
  return found == folderByKey.end() ? std::nullopt : std::optional(found->second);
}

const DestinationIndex::Files* DestinationIndex::filesIn(std::string_view folder) const {
  // The exact spelling first: a file system may hold two folders with one key.
  auto found = filesByFolder.find(std::string(folder));
  if (found == filesByFolder.end()) found = filesByFolder.find(diskFolder(folder).value_or(""));
  return found == filesByFolder.end() ? nullptr : &found->second;
}

std::set<std::string> DestinationIndex::existingNameKeys(std::string_view folder) const {
  std::set<std::string> keys;
  if (const Files* files = filesIn(folder)) {
    for (const auto& [key, entry] : *files) keys.insert(key);
  }
  return keys;
}

FolderAllocator::FolderContents DestinationIndex::mediaNameSets() const {
  FolderAllocator::FolderContents sets;
  for (const auto& [folder, files] : filesByFolder) {
    std::vector<std::string_view>& keys = sets[folder];
    keys.reserve(files.size());
    for (const auto& [key, entry] : files) keys.emplace_back(key);
  }
  return sets;
}

const DestinationIndex::FileEntry* DestinationIndex::file(std::string_view folder, std::string_view name) const {
  const Files* files = filesIn(folder);
  if (files == nullptr) return nullptr;
  const auto found = files->find(FileNaming::normalizedKey(name));
  return found == files->end() ? nullptr : &found->second;
}

bool DestinationIndex::contains(std::string_view relativePath) const {
  const auto slash = relativePath.find('/');
  if (slash == std::string_view::npos) return false;
  return file(relativePath.substr(0, slash), relativePath.substr(slash + 1)) != nullptr;
}

std::optional<ExportPlace> DestinationIndex::place(std::string_view folder, std::string_view name) const {
  const FileEntry* entry = file(folder, name);
  return entry == nullptr ? std::nullopt : std::optional(placeOf(folder, *entry));
}

ExportPlace DestinationIndex::placeOf(std::string_view folder, const FileEntry& file) const {
  const std::string asGiven(folder);
  return {.folder = filesByFolder.contains(asGiven) ? asGiven : *diskFolder(folder), .name = file.name};
}

std::optional<fs::path> DestinationIndex::url(std::string_view folder, std::string_view name) const {
  const std::optional<ExportPlace> found = place(folder, name);
  return found ? std::optional(found->in(destination)) : std::nullopt;
}

void DestinationIndex::addFile(const std::string& folder, const std::string& name, std::int64_t size) {
  const std::string onDisk = filesByFolder.contains(folder) ? folder : diskFolder(folder).value_or(folder);
  folderByKey.emplace(FileNaming::normalizedKey(onDisk), onDisk);
  filesByFolder[onDisk].insert_or_assign(FileNaming::normalizedKey(name), FileEntry{name, size});
}

void DestinationIndex::removeFile(std::string_view folder, std::string_view name) {
  auto found = filesByFolder.find(std::string(folder));
  if (found == filesByFolder.end()) found = filesByFolder.find(diskFolder(folder).value_or(""));
  if (found != filesByFolder.end()) found->second.erase(FileNaming::normalizedKey(name));
}
