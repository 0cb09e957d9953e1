#pragma once

#include <cstdint>
#include <optional>
#include <string>

// What the archive's chat list says of a chat.
struct ArchiveChatSummary {
  std::string id;
  std::string name;
  std::string jid;
  std::string folder;
  std::string dataFile;  // the name of the script with its messages
  bool isGroup = false;
  std::string preview;
  std::int64_t messageCount = 0;
  std::optional<double> lastTimestamp;  // of the last dated message, in seconds since 1970
  std::optional<std::string> avatarRelativePath;
  bool isGone = false;  // the phone no longer has the chat

  bool operator==(const ArchiveChatSummary&) const = default;
};
