#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TidewellCore/ChatData/ChatRecords.h"
#include "TidewellCore/ChatData/ContactDirectory.h"
#include "TidewellCore/TranscriptStyle.h"

// All that one backup's chat database holds, read once and then unchanged.
//
// WhatsApp may keep two records of one person, one by phone number and one by
// LID. They are one chat, known by its canonical JID: the phone's.
struct ChatStorageSnapshot {
  // Where a message stands in `messagesByChat`.
  struct MessagePosition {
    std::int64_t chatPK = 0;
    std::size_t index = 0;

    bool operator==(const MessagePosition&) const = default;
  };

  std::map<std::int64_t, ChatRecord> chats;                   // by primary key
  std::map<std::string, ChatRecord, std::less<>> chatsByJID;  // as the JID is stored
  // Oldest first, undated before all; those of one date in the phone's own order.
  std::map<std::int64_t, std::vector<MessageRecord>> messagesByChat;
  std::unordered_map<std::string, MessagePosition> mediaByRelativePath;
  UnreadMessages unread;
  ContactDirectory directory;
  // Derived from `chats` and `directory`; the smallest primary key first.
  std::map<std::string, std::vector<std::int64_t>, std::less<>> chatPKsByCanonicalJID;
  std::vector<std::string> warnings;  // what may be missing: sentences for people, in English

  // Replaces the directory and what is derived from it.
  void setDirectory(ContactDirectory completed);

  // The record of that very JID, else that of its canonical JID, else the first
  // of the same person. Null when there is none.
  const ChatRecord* chat(std::string_view jid) const;
  // The phone's JID for a LID that the directory knows; else the JID, trimmed.
  std::string canonicalChatJID(std::string_view jid) const;
  // The canonical JID, then its LID or phone counterpart.
  std::vector<std::string> aliasJIDs(std::string_view jid) const;
  // What a chat is called everywhere.
  std::string chatTitle(std::string_view jid) const;

  // The message that carries a media file of the backup; null when none does.
  const MessageRecord* mediaMessage(std::string_view relativePath) const;
  // The canonical JID of the chat that a media file belongs to: its message's,
  // else that of its path, else UnknownChatJID.
  std::string ownerJID(std::string_view mediaPath, const std::optional<std::string>& pathJID) const;

  // Who wrote a message; never the digits of a LID. `chat` is the message's record, or null.
  std::string senderName(const MessageRecord& message, const ChatRecord* chat, const TranscriptStyle& style) const;

 private:
  std::string titleOf(const ChatRecord& record) const;
};
