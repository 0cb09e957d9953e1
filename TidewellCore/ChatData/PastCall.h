#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/DateText.h"

// A call of WhatsApp's own list of calls, which knows those that no chat tells of.
struct PastCall {
  std::int64_t pk = 0;  // its row's key
  std::string id;       // empty when it is not stored
  std::optional<Date> date;
  bool isIncoming = false;
  CallRecord call;
  std::vector<std::string> participantJIDs;
  std::optional<std::string> groupJID;
  std::optional<std::string> creatorJID;

  bool operator==(const PastCall&) const = default;
};

// A message of the same chat that tells of a call.
struct CallMessage {
  std::optional<Date> date;
  bool isFromMe = false;
  std::optional<std::int64_t> seconds;
};

// Whether both are one call by direction and time, which differ by no more than the call lasted and a minute.
bool isSameCall(const PastCall& call, const CallMessage& message);
