#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/Bytes.h"

// What ZMETADATA of a media item tells about its message (docs/formats/messages.md).
struct MessageMetadata {
  std::optional<Quote> quote;
  bool isForwarded = false;
  BusinessText business;
  std::optional<Product> product;
  std::optional<GroupInvite> invite;
  std::optional<std::int64_t> timerSeconds;  // 0 turns the timer off
  std::optional<std::int64_t> callSeconds;
  std::optional<std::string> sourceURL;  // of the advertisement that is answered
  std::optional<std::string> linkDescription;

  bool operator==(const MessageMetadata&) const = default;

  // Absent for bytes that are wrong in any way.
  static std::optional<MessageMetadata> read(ByteView bytes, std::span<const std::string> ownJIDs);
};
