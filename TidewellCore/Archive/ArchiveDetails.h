#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/Json.h"
#include "TidewellCore/Platform/RawValue.h"

// What the Chat Archive shows of a message beside its text and its file. All texts
// are cleaned; names, and what is shown on one line, hold no line break.

// What a message is that is more than a text or a file.
enum class ArchiveKind {
  none,
  place,
  contacts,
  poll,
  call,
  notice,
  deleted,
  waiting,
  missing,
  invite,
  product,
  business,
  unsupported,
};

constexpr std::array<std::pair<ArchiveKind, std::string_view>, 13> rawValueTable(ArchiveKind) {
  using enum ArchiveKind;
  return {{{none, ""},
           {place, "place"},
           {contacts, "contacts"},
           {poll, "poll"},
           {call, "call"},
           {notice, "notice"},
           {deleted, "deleted"},
           {waiting, "waiting"},
           {missing, "missing"},
           {invite, "invite"},
           {product, "product"},
           {business, "business"},
           {unsupported, "unsupported"}}};
}

// What a message answers.
struct ArchiveQuote {
  bool isOwner = false;  // the owner wrote it
  std::string name;      // of who wrote it; empty when that is not known
  MessagePart part = MessagePart::text;
  std::string words;                // of the answered message, or what it was
  std::optional<std::string> toID;  // of the answered message, when it is in the same chat

  bool operator==(const ArchiveQuote&) const = default;
};

struct ArchiveReaction {
  std::string emoji;
  std::vector<std::string> names;
  std::int64_t count = 0;  // of all; more than there are names where a channel only counts

  bool operator==(const ArchiveReaction&) const = default;
};

struct ArchiveDetails {
  ArchiveKind kind = ArchiveKind::none;
  Json::Object info;  // the facts of the kind, and `link`; made and read by MessageInfo
  MessageMarks marks;
  std::map<std::string, std::string> mentions;  // the digits behind an "@" in the text → a name
  std::optional<ArchiveQuote> quote;
  std::vector<ArchiveReaction> reactions;  // the most frequent first

  bool operator==(const ArchiveDetails&) const = default;
};
