#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "TidewellCore/Export/FolderAllocator.h"

// What a content root holds: the chat folders and the files directly in them.
// Folders and files are found by the key of their name.
struct DestinationIndex {
  struct FileEntry {
    std::string name;  // as it is spelt on disk
    std::int64_t size = 0;

    bool operator==(const FileEntry&) const = default;
  };
  using Files = std::map<std::string, FileEntry>;  // by the key of the name

  std::filesystem::path destination;
  std::map<std::string, std::string> folderByKey;  // the folder as it is spelt on disk
  std::map<std::string, Files> filesByFolder;      // by the folder as it is spelt on disk

  std::set<std::string> unreadableFolders;  // of those, what could not be listed, and counts as empty

  // Empty when there is no content root. Throws std::filesystem::filesystem_error when it cannot be listed.
  static DestinationIndex load(const std::filesystem::path& contentRoot);

  std::optional<std::string> diskFolder(std::string_view matching) const;
  std::optional<std::string> resolvedFolder(std::string_view name) const { return diskFolder(name); }
  std::set<std::string> existingNameKeys(std::string_view folder) const;
  FolderAllocator::FolderContents mediaNameSets() const;
  // Null when there is none.
  const FileEntry* file(std::string_view folder, std::string_view name) const;
  // `relativePath` reads folder, slash, file.
  bool contains(std::string_view relativePath) const;
  std::optional<std::filesystem::path> url(std::string_view folder, std::string_view file) const;

  // The file that an earlier export made of the same medium: of the first 64
  // variants of `desired` the first with that size, those of the keys in
  // `claimed` left out. A negative size is unknown and matches nothing.
  std::optional<std::string> existingSameSizeVariant(std::string_view folder, std::string_view desired,
                                                     std::int64_t sourceSize,
                                                     const std::set<std::string>& claimed) const;

  void addFile(const std::string& folder, const std::string& name, std::int64_t size);
  void removeFile(std::string_view folder, std::string_view name);

  bool operator==(const DestinationIndex&) const = default;

 private:
  const Files* filesIn(std::string_view folder) const;
};
