#pragma once

#include <cstddef>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/ChatData/NoticeRow.h"

// Group events: the rows of type 6 (docs/formats/messages.md).
namespace GroupEvents {

// A code that is not known, or whose parameter is not as it should be, is an
// unknownGroupEvent; each keeps its code. Of all others only the actor, and the name that
// a group got, may be absent.
Notice read(const NoticeRow& row);

inline constexpr std::size_t mostTargets = 1'000;
inline constexpr std::size_t longestParameter = 1 << 16;  // bytes; a longer one is as good as none

}  // namespace GroupEvents
