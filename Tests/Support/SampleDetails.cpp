#include "Tests/Support/SampleDetails.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Tests/Support/MessageBlobs.h"
#include "Tests/Support/SampleFiles.h"

namespace Fixture {

namespace {

constexpr std::array emoji = {"👍", "❤️", "😂", "😮", "🙏", "🎉"};
constexpr std::int64_t forwardedFlags = 0x180;

bool isPerson(const std::string& jid) { return jid.ends_with("@s.whatsapp.net"); }

// What the owner only reads.
bool isBroadcast(const Conversation& conversation) {
  return conversation.members.empty() && !isPerson(conversation.jid) && !conversation.jid.ends_with("@lid");
}

}  // namespace

void SampleDetails::dress(Message& message, const Conversation& conversation) {
  if (message.type == groupEventType) {
    constexpr std::array<std::int64_t, 3> pictureDescriptionNumber = {4, 17, 9};
    message.event = random_.pick(pictureDescriptionNumber);
    message.toJID = sampleOwnJID;
    return;
  }
  const auto* text = std::get_if<std::string>(&message.text);
  const bool isText = message.type == textType && text != nullptr;
  if (message.type == deletedType || isBroadcast(conversation)) return;
  std::vector<Said>& talk = talks_[conversation.pk];
  const std::size_t roll = random_.below(200);
  if (roll < 14) react(message, conversation);
  if (isText && roll >= 14 && roll < 24 && !talk.empty()) answer(talk);
  if (isText && roll == 24) message.flags = forwardedFlags;
  if (roll == 25) message.starred = true;
  if (isText) talk.push_back({next(), senderOf(message, conversation), *text});
  if (isText && roll == 26) lose(message, conversation);
}

void SampleDetails::react(Message& message, const Conversation& conversation) {
  auto time = static_cast<std::int64_t>((std::get<double>(message.date) + 978'307'200) * 1000);
  std::vector<ReactionRow> reactions;
  for (std::size_t left = conversation.members.empty() ? 1 : 1 + random_.below(3); left > 0; --left) {
    time += static_cast<std::int64_t>(5'000 + random_.below(600'000));
    reactions.push_back({.jid = listenerOf(message, conversation), .emoji = random_.pick(emoji), .milliseconds = time});
  }
  message.receiptInfo = receiptInfo(reactions);
}

// Mostly of one of the messages before, at times of any.
void SampleDetails::answer(const std::vector<Said>& talk) {
  const std::size_t near = std::min<std::size_t>(talk.size(), 6);
  const Said& said = talk[talk.size() - 1 - random_.below(random_.chance(80) ? near : talk.size())];
  const ReplyRow reply{stanzaIDOf(said.pk), said.jid, "", copyOfText(said.text)};
  app_.mediaItems.push_back({.message = next(), .metadata = replyMetadata(reply).bytes()});
}

void SampleDetails::lose(Message& message, const Conversation& conversation) {
  const bool isPhoto = random_.chance(60);
  message.type = isPhoto ? photoType : audioType;
  message.text = {};
  MediaItem item{.message = next(), .localPath = mediaPath(conversation.jid, random_.uuid(), isPhoto ? "jpg" : "opus")};
  if (!isPhoto) item.duration = static_cast<std::int64_t>(3 + random_.below(90));
  app_.mediaItems.push_back(std::move(item));
}

std::string SampleDetails::senderOf(const Message& message, const Conversation& conversation) const {
  if (message.isFromMe == SQLValue(std::int64_t{1})) return sampleOwnJID;
  const auto* member = std::get_if<std::int64_t>(&message.member);
  if (member == nullptr) return conversation.jid;
  return std::get<std::string>(app_.members[static_cast<std::size_t>(*member) - 1].jid);
}

// The owner, whose JID is empty here, or somebody else; of two people the one who did not write.
std::string SampleDetails::listenerOf(const Message& message, const Conversation& conversation) {
  const bool isMine = message.isFromMe == SQLValue(std::int64_t{1});
  if (conversation.members.empty()) return isMine ? conversation.jid : "";
  if (!isMine && random_.chance(40)) return "";
  return std::get<std::string>(app_.members[static_cast<std::size_t>(random_.pick(conversation.members)) - 1].jid);
}

void SampleDetails::addCalls(const std::vector<Conversation>& conversations, double firstDate, double lastDate) {
  std::vector<const Conversation*> people;
  for (const Conversation& each : conversations) {
    if (isPerson(each.jid)) people.push_back(&each);
  }
  if (!app_.calls) app_.calls.emplace();
  for (int number = 0; number < 24; ++number) {
    const double date = firstDate + (lastDate - firstDate) * static_cast<double>(random_.below(1'000)) / 1'000;
    const bool isTaken = random_.chance(70);
    const bool isIncoming = random_.chance(50);
    app_.calls->push_back({.id = "sample:" + std::to_string(number),
                           .date = date,
                           .duration = isTaken ? static_cast<double>(5 + random_.below(3'000)) : 0.0,
                           .incoming = isIncoming,
                           .video = random_.chance(30),
                           .missed = isIncoming && !isTaken,
                           .outcome = isTaken ? 0 : 1,
                           .participants = {random_.pick(people)->jid}});
  }
}

}  // namespace Fixture
