#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"

// A row that WhatsApp writes by itself, as its columns say. The texts must outlive it.
struct NoticeRow {
  std::int64_t code = 0;                       // ZGROUPEVENTTYPE
  std::optional<std::string_view> text;        // ZTEXT: a name, a JID, a list or JSON, as the code has it
  std::optional<std::string_view> memberJID;   // of ZGROUPMEMBER
  std::optional<std::string_view> creatorJID;  // of the group, ZCREATORJID
  bool isFromMe = false;
  std::span<const std::string> ownJIDs;
};

// Group events: the rows of type 6 (docs/formats/messages.md).
namespace GroupEvents {

// A code that is not known, or whose parameter is not as it should be, is unknownGroupEvent and keeps its code.
Notice read(const NoticeRow& row);

inline constexpr std::size_t mostTargets = 1'000;
inline constexpr std::size_t longestParameter = 1 << 16;  // bytes; longer ones hold nothing

}  // namespace GroupEvents
