#pragma once

#include <span>
#include <string>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/ProtobufReader.h"

namespace PollVotes {

inline constexpr std::size_t mostOptions = 1'000;
inline constexpr std::size_t mostVotes = 20'000;  // of all options together

// Field 8 of ZRECEIPTINFO, as ReceiptInfo has it: a person's last vote counts, and
// only for options that there are. Throws ProtobufError.
Poll read(ProtobufReader field, std::span<const std::string> ownJIDs);

}  // namespace PollVotes
