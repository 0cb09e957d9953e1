#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A written Chat Archive whose files go to other places afterwards.
namespace ArchiveRelocation {

// Which folder the archive's chat list gives a chat.
struct ChatReference {
  std::string jid;
  std::string folder;

  bool operator==(const ChatReference&) const = default;
};

// Where something stands now, from the content root; absent when it has not moved.
using NewPlace = std::function<std::optional<std::string>(const std::string& formerPlace)>;
struct NewPlaces {
  NewPlace folder;
  NewPlace file;  // "folder/file"
};

// The chats with a folder; empty when the list in `dataFolder` cannot be read.
std::vector<ChatReference> loadChats(const std::filesystem::path& dataFolder);

// Makes the chat list, the chats' data files and the message blocks point at
// the new places; all else in them stays. The chat list comes last, so that an
// interruption leaves an archive that opens. Files without what is expected are
// left as they are. Tells whether anything changed; throws what listing and writing report.
bool rewrite(const std::filesystem::path& dataFolder, const NewPlaces& places);

}  // namespace ArchiveRelocation
