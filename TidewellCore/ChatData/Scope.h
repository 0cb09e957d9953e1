#pragma once

#include <optional>
#include <set>
#include <span>

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/ChatData/Selection.h"

// Which chats, and what stretch of time, a scan or an export takes of a backup: the one
// answer to whether a message or a medium is taken. By itself it is all of it.
struct Scope {
  std::optional<std::set<CanonicalJID>> chats;  // absent for all
  std::optional<Date> from;                     // what was sent then is taken; whole seconds
  std::optional<Date> before;                   // and what was sent then is not; whole seconds

  // The days of a selection are those of `timeZone`. Throws TidewellError::unknownChat and ambiguousChat.
  static Scope of(const Selection& selection, const BackupSource& source, const TimeZone& timeZone);

  bool isEverything() const { return !chats && hasAllTime(); }
  bool hasAllTime() const { return !from && !before; }
  bool has(const CanonicalJID& chat) const { return !chats || chats->contains(chat); }
  // What has no date is taken with all time alone.
  bool has(const CanonicalJID& chat, const std::optional<Date>& date) const;
  // Those of a chat that are taken, in their order.
  std::span<const MessageRecord> messages(const ChatStorageSnapshot& snapshot, const CanonicalJID& chat) const;

  bool operator==(const Scope&) const = default;
};
