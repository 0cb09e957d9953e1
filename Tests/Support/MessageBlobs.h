#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Support/ProtobufWriter.h"

// What ZMETADATA and ZRECEIPTINFO hold of a message (docs/formats/messages.md).
namespace Fixture {

// Of the owner when there is no JID.
struct ReactionRow {
  std::string jid;
  std::string emoji;
  std::int64_t milliseconds = 0;  // Unix time
};

// The owner's when there is no JID.
struct VoteRow {
  std::string jid;
  std::vector<std::int64_t> options;
};

struct PollRow {
  std::string question;
  std::vector<std::string> options;
  std::vector<VoteRow> votes;
};

// ZRECEIPTINFO.
Bytes receiptInfo(const std::vector<ReactionRow>& reactions, const std::optional<PollRow>& poll = std::nullopt);
// The same of a channel, which only counts.
Bytes reactionTotals(const std::vector<std::pair<std::string, std::int64_t>>& totals);

// What is answered, and the copy of it that came along.
struct ReplyRow {
  std::string stanzaID;
  std::string senderJID;
  std::string otherChatJID;
  Protobuf copy;
};

// Of ZMETADATA; what several give can be put together with append.
Protobuf replyMetadata(const ReplyRow& reply);
// The same as older versions kept it, which is no protobuf.
Bytes olderReplyMetadata(const ReplyRow& reply);
Protobuf forwardMetadata(std::int64_t times);
Protobuf linkMetadata(std::string_view description);
Protobuf advertisementMetadata(std::string_view url);
Protobuf timerMetadata(std::int64_t seconds);
Protobuf callMetadata(std::int64_t seconds);
Protobuf inviteMetadata(std::string_view groupName, std::string_view caption);

struct ProductRow {
  std::string title;
  std::string description;
  std::string currency;
  std::int64_t thousandths = 0;
};
Protobuf productMetadata(const ProductRow& product);

struct ButtonRow {
  std::string words;
  std::string url;
  std::string phone;
};
struct BusinessRow {
  std::string title;
  std::string words;
  std::string footer;
  std::vector<ButtonRow> buttons;
};
Protobuf templateMetadata(const BusinessRow& text);
Protobuf listMetadata(const BusinessRow& text);
Protobuf buttonsMetadata(const BusinessRow& text);

// Copies of what is answered.
Protobuf copyOfText(std::string_view words);
Protobuf copyOfPhoto(std::string_view caption = {});
Protobuf copyOfVideo(std::string_view caption);
Protobuf copyOfVoiceMessage();

}  // namespace Fixture
