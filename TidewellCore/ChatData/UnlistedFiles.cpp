#include "TidewellCore/ChatData/UnlistedFiles.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "TidewellCore/Backup/StoredFileLocation.h"

namespace {

constexpr std::array<std::string_view, 7> companions{
    "ChatStorage.sqlite-wal", "ContactsV2.sqlite", "ContactsV2.sqlite-wal", "CallHistory.sqlite",
    "CallHistory.sqlite-wal", "LID.sqlite",        "LID.sqlite-wal"};

using Paths = std::unordered_set<std::string_view>;

Paths listed(const ManifestStore& manifest) {
  Paths paths;
  paths.reserve(manifest.files.size());
  for (const ManifestFile& file : manifest.files) {
    if (file.domain == manifest.chatStorage->domain) paths.insert(file.relativePath);
  }
  return paths;
}

// Those that messages name and the index does not, the newest first.
std::vector<std::string_view> newestUnlisted(const ChatStorageSnapshot& snapshot, const Paths& listed) {
  std::vector<const MessageRecord*> messages;
  for (const std::string_view path : snapshot.mediaPaths()) {
    if (!listed.contains(path)) messages.push_back(snapshot.mediaMessage(path));
  }
  const auto end = messages.begin() + static_cast<std::ptrdiff_t>(std::min(messages.size(), UnlistedFiles::mostMedia));
  std::ranges::partial_sort(messages, end, std::ranges::greater(), &MessageRecord::date);
  std::vector<std::string_view> paths;
  std::transform(messages.begin(), end, std::back_inserter(paths),
                 [](const MessageRecord* message) { return *message->mediaLocalPath; });
  return paths;
}

}  // namespace

bool UnlistedFiles::areThere(const OpenedBackup& opened, const ManifestStore& manifest,
                             const ChatStorageSnapshot& snapshot, const CancellationCheck& isCancelled) {
  if (!manifest.chatStorage) return false;
  const Paths paths = listed(manifest);
  const auto isStored = [&](std::string_view path) {
    throwIfCancelled(isCancelled);
    return !paths.contains(path) && opened.isStored({.fileID = fileIdentifier(manifest.chatStorage->domain, path)});
  };
  return std::ranges::any_of(companions, isStored) || std::ranges::any_of(newestUnlisted(snapshot, paths), isStored);
}
