#include "TidewellCore/ChatData/ReceiptInfo.h"

#include "TidewellCore/ChatData/PollVotes.h"
#include "TidewellCore/ChatData/Reactions.h"

std::optional<ReceiptInfo> ReceiptInfo::read(ByteView bytes, std::span<const std::string> ownJIDs) {
  try {
    ReceiptInfo info;
    for (ProtobufReader fields(bytes); fields.next();) {
      if (fields.number() == 7) info.reactions = Reactions::read(fields.message(), ownJIDs);
      if (fields.number() == 8) info.poll = PollVotes::read(fields.message(), ownJIDs);
    }
    return info;
  } catch (const ProtobufError&) {
    return std::nullopt;
  }
}
