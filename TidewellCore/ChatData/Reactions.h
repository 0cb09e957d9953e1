#pragma once

#include <span>
#include <string>
#include <vector>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/ProtobufReader.h"

namespace Reactions {

inline constexpr std::size_t most = 1'000;

// Field 7 of ZRECEIPTINFO, as ReceiptInfo has it. Throws ProtobufError.
std::vector<Reaction> read(ProtobufReader field, std::span<const std::string> ownJIDs);

}  // namespace Reactions
