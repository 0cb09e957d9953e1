#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/Bytes.h"

// What ZRECEIPTINFO of a message's info row tells (docs/formats/messages.md): how
// others reacted and voted. Who received a message and when is a guess and not read.
struct ReceiptInfo {
  // One of each person, the newest, unless it was withdrawn; the oldest first. What
  // a channel only counts stands behind them.
  std::vector<Reaction> reactions;
  std::optional<Poll> poll;

  bool operator==(const ReceiptInfo&) const = default;

  // Absent for bytes that are wrong in any way.
  static std::optional<ReceiptInfo> read(ByteView bytes, std::span<const std::string> ownJIDs);
};
