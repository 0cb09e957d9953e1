#include "TidewellCore/Archive/ContentWords.h"

#include <fmt/format.h>

#include <array>

#include "TidewellCore/Archive/NoticeWords.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using ContentWords::label;
using ReadableText::cleaned;

std::string joined(const std::vector<std::string>& entries, std::string_view separator) {
  return fmt::format("{}", fmt::join(entries, separator));
}

// By missed, group, and neither voice nor video, voice, video.
constexpr std::array<std::array<std::array<std::string_view, 3>, 2>, 2> callNames{{
    {{{"call", "voiceCall", "videoCall"}, {"groupCall", "groupVoiceCall", "groupVideoCall"}}},
    {{{"missedCall", "missedVoiceCall", "missedVideoCall"},
      {"missedGroupCall", "missedGroupVoiceCall", "missedGroupVideoCall"}}},
}};

std::string_view nameOf(const CallRecord& call) {
  const std::size_t medium = !call.isVideo ? 0 : *call.isVideo ? 2 : 1;
  return callNames[call.isMissed ? 1 : 0][call.isGroup ? 1 : 0][medium];
}

// "Carla (+1 555 000 0009, carla@example.org)"
std::string words(const SharedContact& contact) {
  std::vector<std::string> ways;
  for (const std::string& phone : contact.phones) ways.push_back(Wording::line(phone));
  for (const std::string& email : contact.emails) ways.push_back(Wording::line(email));
  const std::string name = Wording::line(contact.name);
  if (ways.empty()) return name;
  return name.empty() ? joined(ways, ", ") : fmt::format("{} ({})", name, joined(ways, ", "));
}

// One function for each kind; the overloads are the table.
struct Words {
  const ContentWords::Setting& setting;

  const Wording& wording() const { return setting.wording; }

  std::string headed(MessagePart part, const std::string& words) const {
    const std::string head = label(part, wording());
    return words.empty() ? head : head + ": " + words;
  }

  std::string operator()(const std::monostate&) const { return {}; }
  std::string operator()(const LinkPreview&) const { return {}; }

  std::string operator()(const SharedLocation& location) const {
    std::vector<std::string> parts;
    if (location.name) parts.push_back(Wording::line(*location.name));
    if (location.address && location.address != location.name) parts.push_back(Wording::line(*location.address));
    const MessagePart part = location.isLive ? MessagePart::liveLocation : MessagePart::location;
    const std::string place = headed(part, joined(parts, ", "));
    return location.coordinates ? fmt::format("{} ({})", place, Wording::text(*location.coordinates)) : place;
  }

  std::string operator()(const SharedContacts& contacts) const {
    std::vector<std::string> people;
    for (const SharedContact& contact : contacts.contacts) people.push_back(words(contact));
    return headed(people.size() > 1 ? MessagePart::contacts : MessagePart::contact, joined(people, "; "));
  }

  std::string operator()(const Poll& poll) const {
    std::vector<std::string> options;
    for (const PollOption& option : poll.options) {
      std::vector<std::string> voters;
      for (const Person& voter : option.voters) voters.push_back(wording().name(voter));
      options.push_back(wording().option(Wording::line(option.words), voters));
    }
    const std::string question = headed(MessagePart::poll, Wording::line(poll.question));
    return options.empty() ? question : question + " — " + joined(options, ", ");
  }

  std::string operator()(const CallRecord& call) const {
    const std::string name = wording().say("messages", nameOf(call));
    return call.seconds ? name + ", " + Wording::duration(*call.seconds) : name;
  }

  std::string operator()(const GroupInvite& invite) const {
    if (!invite.groupName) return wording().say("messages", "invitation");
    return wording().say("messages", "invitationTo", {{"group", Wording::line(*invite.groupName)}});
  }

  std::string operator()(const Product& product) const {
    std::string text = headed(MessagePart::product, Wording::line(product.title));
    if (product.thousandths && product.currency) {
      text += ", " + wording().price(*product.thousandths, *product.currency);
    }
    return product.description ? text + "\n" + cleaned(*product.description) : text;
  }

  std::string operator()(const BusinessText& text) const {
    std::vector<std::string> lines;
    for (const std::string& paragraph : text.paragraphs) lines.push_back(cleaned(paragraph));
    for (const BusinessButton& button : text.buttons) {
      lines.push_back("[" + Wording::line(button.words) + "]");
      if (button.target) lines.back() += " " + Wording::line(*button.target);
    }
    return joined(lines, "\n");
  }

  std::string operator()(const DeletedMessage& message) const {
    const auto& remover = message.remover;
    if (remover ? remover->isOwner : setting.isFromMe) return wording().say("messages", "deletedByYou");
    if (!remover) return wording().say("messages", "deleted");
    const auto admin = wording().knownName(*remover);
    if (!admin) return wording().say("messages", "deletedBySomeAdmin");
    return wording().say("messages", "deletedByAdmin", {{"name", *admin}});
  }

  std::string operator()(const WaitingMessage&) const { return wording().say("messages", "waiting"); }

  std::string operator()(const MissingMedia& media) const {
    std::string medium = headed(media.part, Wording::line(media.fileName.value_or("")));
    if (media.seconds) medium += ", " + Wording::duration(*media.seconds);
    return wording().say("messages", "notInBackup", {{"medium", medium}});
  }

  std::string operator()(const Notice& notice) const {
    return NoticeWords::sentence(notice, wording(), setting.partner);
  }

  std::string operator()(const UnsupportedMessage& message) const {
    return wording().say("messages", "unsupported", {{"code", std::to_string(message.type)}});
  }
};

struct PartOf {
  MessagePart operator()(const SharedLocation& place) const {
    return place.isLive ? MessagePart::liveLocation : MessagePart::location;
  }
  MessagePart operator()(const SharedContacts& shared) const {
    return shared.contacts.size() == 1 ? MessagePart::contact : MessagePart::contacts;
  }
  MessagePart operator()(const Poll&) const { return MessagePart::poll; }
  MessagePart operator()(const Product&) const { return MessagePart::product; }
  MessagePart operator()(const GroupInvite&) const { return MessagePart::invite; }
  MessagePart operator()(const MissingMedia& media) const { return media.part; }
  MessagePart operator()(const auto&) const { return MessagePart::text; }
};

}  // namespace

std::string ContentWords::of(const MessageContent& content, const Setting& setting) {
  return std::visit(Words{setting}, content);
}

std::string ContentWords::notExported(MediaKind kind, const Wording& wording) {
  return wording.say("messages", "notExported", {{"medium", label(partOf(kind), wording)}});
}

MessagePart ContentWords::partOf(MediaKind kind) {
  switch (kind.value()) {
    case MediaKind::photos:
      return MessagePart::photo;
    case MediaKind::videos:
      return MessagePart::video;
    case MediaKind::voiceNotes:
      return MessagePart::voiceMessage;
    case MediaKind::stickers:
      return MessagePart::sticker;
    case MediaKind::documents:
      break;
  }
  return MessagePart::document;
}

MessagePart ContentWords::partOf(const MessageContent& content) { return std::visit(PartOf(), content); }

std::string ContentWords::label(MessagePart part, const Wording& wording) {
  return wording.say("parts", rawValue(part));
}
