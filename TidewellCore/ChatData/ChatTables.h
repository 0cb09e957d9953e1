#pragma once

#include <cstdint>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "TidewellCore/ChatData/ChatRecords.h"
#include "TidewellCore/ChatData/ContactDirectory.h"
#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/TextArena.h"

// The tables of a chat database, read and not yet put together: which chat a
// person's messages belong to is known only when all names and numbers are.
struct ChatTables {
  std::map<std::int64_t, ChatRecord> chats;  // by primary key
  std::vector<MessageRecord> messages;       // that say their chat, as they were read
  // What messages are beside text and file, by their keys: those that are something.
  std::vector<std::pair<std::int64_t, MessageDetails>> details;
  std::unordered_set<std::int64_t> silentMessages;  // keys of those that say no chat and hold no text
  std::vector<MediaItemRecord> media;               // files, as they were read
  // Keys of media items that messages name and that were not found by them, with the messages' keys.
  std::unordered_map<std::int64_t, std::int64_t> unfoundItems;
  std::vector<std::string> ownJIDs;  // the owner's, as they are stored
  ContactDirectory directory;        // what these tables know of people
  UnreadMessages unread;
  TextArena texts;  // holds those of messages and media
};
