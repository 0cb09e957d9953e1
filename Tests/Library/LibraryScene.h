#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Archive/ChatLines.h"
#include "TidewellCore/Library/LibraryUpdate.h"

// A library in a folder of its own, that takes in what snapshots tell.
class LibraryScene {
 public:
  // `backupDate` in seconds since 1970; `others` are chats that only files tell of.
  void take(const ChatStorageSnapshot& snapshot, double backupDate = 1, std::vector<CanonicalJID> others = {}) {
    for (const ChatStorageSnapshot::Chat& chat : snapshot.chats()) others.push_back(chat.jid);
    std::ranges::sort(others);
    takeScope(snapshot, {}, backupDate, std::move(others));
  }
  // As an export of that scope: chats without a message in it are not told.
  void takePart(const ChatStorageSnapshot& snapshot, const Scope& scope, double backupDate) {
    std::vector<CanonicalJID> chats;
    for (const ChatStorageSnapshot::Chat& chat : snapshot.chats()) {
      if (!scope.messages(snapshot, chat.jid).empty()) chats.push_back(chat.jid);
    }
    takeScope(snapshot, scope, backupDate, std::move(chats));
  }
  void takeScope(const ChatStorageSnapshot& snapshot, const Scope& scope, double backupDate,
                 std::vector<CanonicalJID> chats) {
    LibraryUpdate::take(library, {},
                        {.snapshot = snapshot,
                         .scope = scope,
                         .chats = std::move(chats),
                         .backup = {.backupDate = dateFromUnixTime(backupDate)},
                         .pageIDOf = ChatArchiveWriter::pageID},
                        {});
  }
  // What another program that opens the file would find.
  void reopen() { library = Library::open(folder.path()); }

  // Null when the library has no such chat.
  const KeptChat* chat(const std::string& jid) const {
    const std::vector<std::size_t> places = library.chatsOf({jid});
    return places.empty() ? nullptr : &library.chats()[places.front()];
  }
  std::vector<ArchiveMessage> messages(const std::string& jid,
                                       const TranscriptStyle& style = TranscriptStyle::english()) const {
    const KeptChat* kept = chat(jid);
    return kept == nullptr ? std::vector<ArchiveMessage>() : ChatLines(library, style).messages(*kept);
  }
  std::vector<std::string> texts(const std::string& jid) const {
    std::vector<std::string> texts;
    for (const ArchiveMessage& message : messages(jid)) texts.push_back(message.text.value_or(""));
    return texts;
  }

  Fixture::TemporaryDirectory folder;
  Library library = Library::open(folder.path());
};
