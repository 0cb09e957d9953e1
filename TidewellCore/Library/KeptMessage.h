#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// A message as the library keeps it, in no language. Its texts are those of the
// KeptMessages, or of the snapshot, that it was taken from.
struct KeptMessage {
  std::int64_t key = 0;            // by which pages know it: unique in its chat
  std::optional<double> time;      // seconds since 1970-01-01T00:00:00Z
  std::int64_t placeInSecond = 0;  // among those of its chat that were sent within one second
  bool isFromMe = false;           // the owner wrote it
  // The date of the newest backup that tells it, in seconds since 1970; absent where that is the newest of those that
  // tell its whole chat. A newer one may have told a part of the chat alone.
  std::optional<double> lastTold;
  // The date of the backup whose words these are, where a newer one says less; absent where `lastTold` is that too.
  std::optional<double> saidAt;
  bool isDeletedLater = false;           // a newer backup says that it was deleted
  std::optional<std::int64_t> sender;    // of KeptPeople; absent for the owner
  std::string_view stanzaID;             // by which others answer it; empty where there is none
  std::string_view text;                 // as it was stored; empty where there is none
  std::optional<std::int64_t> medium;    // of the MediaLedger
  std::string_view facts;                // MessageFacts; empty where it is a text or a file and no more
  std::optional<std::string_view> page;  // as JSON, where only a page tells of it that an earlier program wrote

  // The newest backup that tells its whole chat, whose date is given, lacks it, and no newer one tells it.
  bool isGone(double chatToldAt) const { return lastTold && *lastTold <= chatToldAt; }

  bool operator==(const KeptMessage&) const = default;
};
