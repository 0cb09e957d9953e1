#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TidewellCore/Library/KeptMessage.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/Platform/TextArena.h"

// A chat as the library keeps it.
struct KeptChat {
  std::int64_t id = 0;
  std::string jid;                    // canonical, as the newest backup has it
  std::string name;                   // what it is called everywhere
  std::string page;                   // the ID by which pages know it
  std::string partner;                // whom a chat of two is with, by name; empty where that is nobody known
  std::optional<std::string> avatar;  // from the content root
  bool isGone = false;                // the newest backup lacks it
  double toldAt = 0;                  // the date of the newest backup that tells all of it, in seconds since 1970
  Bytes told;                         // the digest of what that backup tells of it; empty when it is not known
  std::int64_t changed = 0;           // the number of the export that changed it last

  bool operator==(const KeptChat&) const = default;
};

// The messages of one chat, with their texts.
struct KeptMessages {
  std::vector<KeptMessage> list;
  TextArena texts;
};

// What the library keeps, read.
namespace KeptChats {

// In the order in which they came into the library. Throws SQLiteDamage for a page ID that is no part of a file's name.
std::vector<KeptChat> all(const SQLiteDB& database);

// The date of the newest backup that tells a chat, or any message of it, in seconds since 1970.
double lastTold(const SQLiteDB& database, const KeptChat& chat);

// Undated ones first, then oldest first; those of one second in the phone's order.
KeptMessages messages(const SQLiteDB& database, std::int64_t chat);

// The next backup that tells a chat is compared with all of it, whatever it tells.
void forgetDigest(const SQLiteDB& database, std::int64_t chat);

// Brings messages into that order.
void sort(std::vector<KeptMessage>& messages);

}  // namespace KeptChats
