#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/DateText.h"

// What WhatsApp stores, a record for each row. `pk` is the row's primary key (Z_PK).

struct ChatRecord {
  std::int64_t pk = 0;
  std::string jid;   // empty when it is not stored
  std::string name;  // empty when it is not stored

  bool operator==(const ChatRecord&) const = default;
};

// Its texts are kept by the ChatTables, then by the snapshot, that it belongs to.
struct MessageRecord {
  std::int64_t pk = 0;
  std::int64_t chatPK = 0;
  std::optional<Date> date;
  double sort = -std::numeric_limits<double>::infinity();  // the phone's order of messages of one date
  std::optional<std::string_view> text;
  bool isFromMe = false;
  bool hasDetails = false;  // ChatStorageSnapshot::details has more of it, which says so
  std::optional<std::string_view> fromJID;
  std::optional<std::string_view> pushName;  // as it is stored, plausible or not
  std::optional<std::int64_t> groupMemberPK;
  std::optional<std::string_view> stanzaID;        // by which others answer it; unique in its chat
  std::optional<std::string_view> mediaLocalPath;  // in the backup, beginning with "Message/"

  bool operator==(const MessageRecord&) const = default;
};

// A file that a message carries.
struct MediaItemRecord {
  std::optional<std::int64_t> messagePK;
  std::string_view localPath;   // in the backup, beginning with "Message/"
  std::string_view sentDigest;  // SHA-256 in Base64, of the file or of what it was before; empty where there is none

  bool operator==(const MediaItemRecord&) const = default;
};

struct GroupMemberRecord {
  std::int64_t pk = 0;
  std::optional<std::string> jid;
  std::optional<std::string> contactName;
  std::optional<std::string> firstName;
  std::optional<std::int64_t> chatPK;  // of the group
  bool isActive = true;                // has not left it

  bool operator==(const GroupMemberRecord&) const = default;
};

// What of the table of messages was not read. Rows that show nothing, neither text nor file, do not count.
struct UnreadMessages {
  std::int64_t withoutChat = 0;    // rows that do not say which chat they belong to, or have no key
  std::int64_t withoutText = 0;    // messages whose text is stored as no text, or in no column that is known
  std::int64_t ofFiles = 0;        // files whose message is not there
  std::int64_t namelessItems = 0;  // items of media when not one names a file
  // A column that every phone has is not there, a date is no number, or an item of media is not found by its key.
  bool isPartial = false;

  bool operator==(const UnreadMessages&) const = default;
};
