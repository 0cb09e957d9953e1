#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/Library/KeptChats.h"
#include "TidewellCore/Library/KeptPeople.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Library/MediaLedger.h"
#include "TidewellCore/UsedNames.h"

// An export's library, open: all of it in memory but the messages.
class Library {
 public:
  // As LibraryFile::open, but one that will not do is set aside and made anew.
  static Library open(const std::filesystem::path& contentRoot);

  explicit Library(LibraryFile file);

  // No backup was taken in yet, be it that an export was interrupted before.
  bool isNew() const { return isNew_; }
  // Nothing at all was, as it is where an export ended before it told its library anything.
  bool knowsNothing() const { return isNew_ && chats_.empty() && media_.media().empty(); }
  // Of what was set aside, until an export has told the one that was made instead: sentences for people, in English.
  const std::vector<std::string>& warnings() const { return warnings_; }
  const SQLiteDB& database() const { return file_.database(); }
  KeptPeople& people() { return people_; }
  const KeptPeople& people() const { return people_; }
  MediaLedger& media() { return media_; }
  const MediaLedger& media() const { return media_; }

  const std::vector<KeptChat>& chats() const { return chats_; }
  KeptChat& chat(std::size_t place) { return chats_[place]; }
  // The places of the chats that have any of these JIDs, ascending.
  std::vector<std::size_t> chatsOf(const std::vector<std::string>& jids) const;
  // Adds a chat, under a number and a page ID of its own. Returns its place.
  std::size_t add(KeptChat chat);
  // Gives a chat one more JID; tells whether it is new.
  bool identify(std::size_t place, const std::string& jid);
  // Forgets a chat, whose JIDs become another's.
  void joinInto(std::size_t place, std::size_t other);

 private:
  LibraryFile file_;
  bool isNew_ = true;
  std::vector<std::string> warnings_;
  KeptPeople people_;
  MediaLedger media_;
  std::vector<KeptChat> chats_;
  UsedNames pages_;  // the page IDs of the chats
  std::map<std::string, std::int64_t, std::less<>> numbersByJID_;
};
