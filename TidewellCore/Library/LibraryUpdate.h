#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "TidewellCore/Backup/BackupInfo.h"
#include "TidewellCore/ChatData/Scope.h"
#include "TidewellCore/Library/Library.h"
#include "TidewellCore/Library/Renderings.h"

// What one export tells the library, written as one transaction; an export that tells
// nothing new writes nothing. Throws what the database and a full disk do.
namespace LibraryUpdate {

// Chats that an earlier program's pages tell of, with what they tell.
struct EarlierChat {
  KeptChat chat;
  KeptMessages messages;
};
// Hands over such chats, one after another.
using EarlierChats = std::function<void(const std::function<void(const EarlierChat&)>& take)>;

struct Source {
  const ChatStorageSnapshot& snapshot;
  Scope scope;                      // of the export: nothing else is told
  std::vector<CanonicalJID> chats;  // in the scope: those of the snapshot, and those that only files tell of
  const BackupInfo& backup;
  TimeZone timeZone;  // of the export
  Locale locale;
  std::function<std::string(const std::string& jid)> pageIDOf;  // by which pages are to know a chat, if it is free
};

// Takes a backup's chats in, and what the ledger and the people were told meanwhile; what `earlier` hands over, if
// it is anything, before. Throws TidewellError::cancelled, and what `earlier` does.
void take(Library& library, const EarlierChats& earlier, const Source& source, const CancellationCheck& isCancelled);

// What was made of the library.
struct Pages {
  Renderings renderings;
  std::map<std::string, std::string> pictures;  // of chats, from the content root, by the chat's page ID
};
void takePages(Library& library, const Pages& pages);

// Keeps what the ledger was told and who the owner is, and no text.
void takeMedia(Library& library, const ChatStorageSnapshot& snapshot);

}  // namespace LibraryUpdate
