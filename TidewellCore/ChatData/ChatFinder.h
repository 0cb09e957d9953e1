#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/ChatData/BackupSource.h"

// Finds the chats of a backup that people mean. Those that have neither messages nor media are none.
class ChatFinder {
 public:
  explicit ChatFinder(const BackupSource& source);

  // The chat of that JID, under any identity of its person; else the one of that name, letter case and accents
  // ignored, or of that number with its country code, however it is written. Throws TidewellError::unknownChat with
  // the nearest names, and TidewellError::ambiguousChat with all that fit.
  const CanonicalJID& find(std::string_view wanted) const;

  // The JIDs of all of them, ascending.
  std::vector<CanonicalJID> all() const;

 private:
  struct Entry {
    CanonicalJID jid;
    std::string name;
    std::string letters;  // the name's, by which it is found
    std::string number;   // digits; empty where the chat is with no number
  };

  [[noreturn]] void reportUnknown(std::string_view wanted) const;

  const ChatStorageSnapshot& snapshot_;
  std::vector<Entry> entries_;  // by their JIDs
};
