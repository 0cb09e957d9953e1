#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/ExportPlace.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/PortableNames.h"

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
  NameForm nameForm = NameForm::plain;             // of what is to be written there
  std::map<std::string, std::string> folderByKey;  // the folder as it is spelt on disk
  std::map<std::string, Files> filesByFolder;      // by the folder as it is spelt on disk

  std::set<std::string> unreadableFolders;  // of those, what could not be listed, and counts as empty

  // Empty when there is no content root. Throws std::filesystem::filesystem_error
  // when it cannot be listed, and TidewellError::cancelled.
  static DestinationIndex load(const std::filesystem::path& contentRoot, const CancellationCheck& isCancelled = {});

  std::optional<std::string> diskFolder(std::string_view matching) const;
  std::optional<std::string> resolvedFolder(std::string_view name) const { return diskFolder(name); }
  std::set<std::string> existingNameKeys(std::string_view folder) const;
  FolderAllocator::FolderContents mediaNameSets() const;
  // Both null when there is none.
  const Files* filesIn(std::string_view folder) const;
  const FileEntry* file(std::string_view folder, std::string_view name) const;
  // `relativePath` reads folder, slash, file.
  bool contains(std::string_view relativePath) const;
  // As it is spelt on disk.
  std::optional<ExportPlace> place(std::string_view folder, std::string_view file) const;
  // Of one that `file` found in this folder.
  ExportPlace placeOf(std::string_view folder, const FileEntry& file) const;
  std::optional<std::filesystem::path> url(std::string_view folder, std::string_view file) const;

  void addFile(const std::string& folder, const std::string& name, std::int64_t size);
  void removeFile(std::string_view folder, std::string_view name);

  bool operator==(const DestinationIndex&) const = default;
};
