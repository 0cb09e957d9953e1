#pragma once

#include <string>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/Export/MediaLinks.h"

// A backup's chats as lists of lines, from which transcripts and archive are
// written alike. What belongs to no chat is in the chat UnknownChatJID.
class ChatLines {
 public:
  // `snapshot` must outlive it.
  explicit ChatLines(const ChatStorageSnapshot& snapshot) : snapshot_(snapshot) {}

  // Every chat of the backup, and every chat that has a folder, without messages;
  // the one with the newest message first, of equal ones in the order of their JIDs.
  std::vector<ArchiveChat> chats(const ChatFolders& folders) const;
  // The JIDs of the chats that have messages.
  std::vector<CanonicalJID> chatsWithMessages() const;

  // A chat's messages in the snapshot's order.
  std::vector<ArchiveMessage> messages(const std::string& jid, const MediaLinks& links,
                                       const TranscriptStyle& style) const;

 private:
  MessageWords::Context contextOf(const std::string& jid, const TranscriptStyle& style) const;
  // The message that this one answers, when it is in the chat.
  std::optional<MessageWords::Answered> answered(const MessageRecord& record, const MessageDetails& details,
                                                 const TranscriptStyle& style) const;

  const ChatStorageSnapshot& snapshot_;
};
