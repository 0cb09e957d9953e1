#include "Tests/Support/MessageBlobs.h"

#include "Tests/Support/PlistWriter.h"

namespace Fixture {

namespace {

Protobuf words(std::uint32_t field, std::string_view text) {
  return text.empty() ? Protobuf() : Protobuf().text(field, text);
}

Protobuf theirs(const ReactionRow& reaction) {
  return Protobuf()
      .text(1, "3A" + std::to_string(reaction.milliseconds))
      .text(2, reaction.jid)
      .text(3, reaction.emoji)
      .integer(4, reaction.milliseconds);
}

Protobuf mine(const ReactionRow& reaction) {
  return Protobuf()
      .text(1, "3A" + std::to_string(reaction.milliseconds))
      .text(2, reaction.emoji)
      .integer(3, reaction.milliseconds)
      .integer(4, 1);
}

Protobuf voteOf(const VoteRow& vote) {
  Protobuf fields;
  for (const std::int64_t option : vote.options) fields.integer(1, option);
  return vote.jid.empty() ? fields : fields.text(4, vote.jid);
}

Protobuf pollOf(const PollRow& poll) {
  Protobuf fields = Protobuf().text(2, poll.question);
  for (const std::string& option : poll.options) fields.message(3, Protobuf().text(1, option));
  for (const VoteRow& vote : poll.votes) fields.message(vote.jid.empty() ? 6 : 5, voteOf(vote));
  return fields;
}

// A message within a message within a field, as much of the metadata is.
Protobuf nested(std::uint32_t field, const Protobuf& message) {
  return Protobuf().message(field, Protobuf().message(1, message));
}

Protobuf templateButton(const ButtonRow& button) {
  Protobuf said = Protobuf().text(1, button.words);
  if (!button.url.empty()) return Protobuf().message(2, said.text(2, button.url));
  if (!button.phone.empty()) return Protobuf().message(3, said.text(2, button.phone));
  return Protobuf().message(1, said);
}

}  // namespace

Bytes receiptInfo(const std::vector<ReactionRow>& reactions, const std::optional<PollRow>& poll) {
  Protobuf all;
  for (const ReactionRow& reaction : reactions) {
    const bool isMine = reaction.jid.empty();
    all.message(isMine ? 2 : 1, isMine ? mine(reaction) : theirs(reaction));
  }
  Protobuf info;
  if (!reactions.empty()) info.message(7, all);
  if (poll) info.message(8, pollOf(*poll));
  return info.bytes();
}

Bytes reactionTotals(const std::vector<std::pair<std::string, std::int64_t>>& totals) {
  Protobuf counts;
  for (const auto& [emoji, count] : totals) counts.message(1, Protobuf().text(1, emoji).integer(2, count));
  return Protobuf().message(7, Protobuf().message(3, counts)).bytes();
}

Protobuf replyMetadata(const ReplyRow& reply) {
  Protobuf fields = Protobuf().text(5, reply.stanzaID).append(words(6, reply.senderJID));
  return fields.append(words(7, reply.otherChatJID)).message(19, reply.copy);
}

Bytes olderReplyMetadata(const ReplyRow& reply) {
  const PlistDictionary root = {
      {"stanzaID", PlistUID{2}}, {"senderJID", PlistUID{3}}, {"quotedMessageData", PlistUID{4}}};
  const PlistArray objects = {"$null", root, reply.stanzaID, reply.senderJID, reply.copy.bytes()};
  return binaryPlist(PlistDictionary{
      {"$archiver", "NSKeyedArchiver"}, {"$top", PlistDictionary{{"root", PlistUID{1}}}}, {"$objects", objects}});
}

Protobuf forwardMetadata(std::int64_t times) { return Protobuf().integer(17, times); }

Protobuf linkMetadata(std::string_view description) { return Protobuf().text(3, description); }

Protobuf advertisementMetadata(std::string_view url) { return nested(42, Protobuf().text(9, url)); }

Protobuf timerMetadata(std::int64_t seconds) { return Protobuf().integer(36, seconds); }

Protobuf callMetadata(std::int64_t seconds) { return nested(87, Protobuf().integer(3, seconds)); }

Protobuf inviteMetadata(std::string_view groupName, std::string_view caption) {
  return Protobuf().message(28, Protobuf()
                                    .text(1, "120363000000000077@g.us")
                                    .text(2, "AbCd0123EfGh4567IjKl89")
                                    .append(words(4, groupName))
                                    .append(words(6, caption)));
}

Protobuf productMetadata(const ProductRow& product) {
  Protobuf fields = Protobuf().text(3, product.title).append(words(4, product.description));
  if (!product.currency.empty()) fields.text(5, product.currency).integer(6, product.thousandths);
  return nested(26, Protobuf().message(1, fields));
}

Protobuf templateMetadata(const BusinessRow& text) {
  Protobuf fields = words(2, text.title).append(words(6, text.words)).append(words(7, text.footer));
  for (const ButtonRow& button : text.buttons) fields.message(8, templateButton(button));
  return nested(24, fields);
}

Protobuf listMetadata(const BusinessRow& text) {
  Protobuf section;
  for (const ButtonRow& row : text.buttons) section.message(2, Protobuf().text(1, row.words));
  return nested(43,
                words(1, text.title).append(words(2, text.words)).append(words(7, text.footer)).message(5, section));
}

Protobuf buttonsMetadata(const BusinessRow& text) {
  Protobuf fields = words(6, text.words).append(words(7, text.footer));
  for (const ButtonRow& button : text.buttons) {
    fields.message(9, Protobuf().message(2, Protobuf().text(1, button.words)));
  }
  return nested(51, fields);
}

Protobuf copyOfText(std::string_view words) { return Protobuf().text(1, words); }

Protobuf copyOfPhoto(std::string_view caption) { return Protobuf().message(3, words(3, caption)); }

Protobuf copyOfVideo(std::string_view caption) { return Protobuf().message(9, words(7, caption)); }

Protobuf copyOfVoiceMessage() { return Protobuf().message(8, Protobuf().integer(5, 7).integer(6, 1)); }

}  // namespace Fixture
