#pragma once

#include <map>
#include <string>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/TranscriptWriter.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Export/FolderManifest.h"
#include "TidewellCore/Export/MediaLinks.h"

// A backup's chats as lists of lines, from which transcripts and archive are
// written alike. What belongs to no chat is in the chat UnknownChatJID.
class ChatLines {
 public:
  // `snapshot` must outlive it.
  explicit ChatLines(const ChatStorageSnapshot& snapshot);

  // Every chat of the backup, and every chat that has a folder, without messages;
  // the one with the newest message first, of equal ones in the order of their JIDs.
  std::vector<ArchiveChat> chats(const FolderAssignment& folders) const;
  // The JIDs of the chats that have messages.
  std::vector<std::string> chatsWithMessages() const;

  // A chat's messages, undated first, then oldest first; those of a person's two
  // records in one row, of equal dates those of the smaller record first.
  std::vector<ArchiveMessage> messages(const std::string& jid, const MediaLinks& links,
                                       const TranscriptStyle& style) const;
  // The same messages as a transcript in the chat's folder shows them.
  static std::vector<TranscriptWriter::Line> transcriptLines(const ArchiveChat& chat);

 private:
  using RecordKeys = std::vector<std::int64_t>;  // primary keys of chat records

  const std::vector<MessageRecord>* messagesOf(std::int64_t key) const;
  double newestDate(const std::string& jid) const;
  std::vector<const MessageRecord*> inOneRow(const RecordKeys& keys) const;

  const ChatStorageSnapshot& snapshot_;
  std::map<std::string, RecordKeys> recordsByJID_;
};
