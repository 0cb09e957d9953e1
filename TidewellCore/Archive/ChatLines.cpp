#include "TidewellCore/Archive/ChatLines.h"

#include <unordered_map>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/ContentWords.h"
#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/TextHash.h"

namespace {

bool mayNamePeople(const KeptMessage& message) { return message.text.find('@') != std::string_view::npos; }

std::optional<std::string> copied(std::string_view text) {
  return text.empty() ? std::nullopt : std::optional(std::string(text));
}

// Words stand for a file that the backup lacks; one that is in the export all the same needs none.
void settleMedia(MessageDetails& details, ArchiveMessage& message) {
  if (!std::holds_alternative<MissingMedia>(details.content) || !message.media) return;
  if (message.media->exported) {
    details.content = std::monostate();
  } else {
    message.lostMedium = message.media->kind;
    message.media.reset();
  }
}

// Messages that others answer, by their stanza IDs; most are answered by nobody, and are not filed.
class Originals {
 public:
  explicit Originals(const std::vector<KeptMessage>& messages) {
    for (const KeptMessage& message : messages) {
      const std::optional<Quote> quote = mayAnswer(message) ? MessageFacts::read(message.facts).quote : std::nullopt;
      if (quote && !quote->stanzaID.empty()) byStanza_[quote->stanzaID];
    }
    if (byStanza_.empty()) return;
    for (const KeptMessage& message : messages) {
      const auto answered = byStanza_.find(message.stanzaID);
      if (answered != byStanza_.end()) answered->second.push_back(&message);
    }
  }

  // The first that is not the answer itself; null when there is none.
  const KeptMessage* of(const KeptMessage& answer, const Quote& quote) const {
    const auto found = byStanza_.find(quote.stanzaID);
    if (found == byStanza_.end()) return nullptr;
    for (const KeptMessage* original : found->second) {
      if (original != &answer) return original;
    }
    return nullptr;
  }

 private:
  static bool mayAnswer(const KeptMessage& message) {
    return message.facts.find("\"quote\"") != std::string_view::npos;
  }

  std::unordered_map<std::string, std::vector<const KeptMessage*>, TextHash, std::equal_to<>> byStanza_;
};

}  // namespace

std::vector<ArchiveMessage> ChatLines::messages(const KeptChat& chat) const {
  const KeptMessages kept = KeptChats::messages(library_.database(), chat.id);
  const Originals originals(kept.list);
  MessageWords::Context context = contextOf(chat);
  std::vector<ArchiveMessage> messages;
  messages.reserve(kept.list.size());
  for (const KeptMessage& message : kept.list) {
    messages.push_back(plain(message));
    messages.back().isGone = message.isGone(chat.toldAt);
    if (message.page || (message.facts.empty() && !mayNamePeople(message))) continue;
    MessageDetails details = MessageFacts::read(message.facts);
    settleMedia(details, messages.back());
    const KeptMessage* original = details.quote ? originals.of(message, *details.quote) : nullptr;
    context.answered = original == nullptr ? std::nullopt : std::optional(answered(*original));
    MessageWords::tell(details, context, messages.back());
  }
  return messages;
}

ArchiveMessage ChatLines::plain(const KeptMessage& message) const {
  const auto json = message.page ? Json::parse(*message.page) : std::nullopt;
  const auto* object = json ? json->as<Json::Object>() : nullptr;
  ArchiveMessage told = object == nullptr ? ArchiveMessage{.fromMe = message.isFromMe,
                                                           .sender = senderOf(message),
                                                           .timestamp = message.time,
                                                           .text = copied(message.text)}
                                          : ArchiveFormat::message(*object);
  told.id = std::to_string(message.key);
  told.isDeletedLater = message.isDeletedLater;
  if (!told.sender.empty()) told.senderJID = senderJIDOf(message);
  if (object != nullptr) told.timestamp = message.time;
  if (auto media = mediaOf(message)) {
    if (told.media) media->kind = told.media->kind;
    told.media = std::move(media);
  } else if (told.media) {
    told.media->relativePath.reset();
    told.media->exported = false;
  }
  return told;
}

std::string ChatLines::senderOf(const KeptMessage& message) const {
  if (message.isFromMe) return style_.youLabel;
  const KeptPeople::Sender* sender = keptSender(message);
  return sender == nullptr ? style_.unknownSenderLabel : sender->name.value_or(style_.unknownSenderLabel);
}

std::string ChatLines::senderJIDOf(const KeptMessage& message) const {
  const KeptPeople::Sender* sender = message.isFromMe ? nullptr : keptSender(message);
  return sender == nullptr ? std::string() : sender->jid;
}

const KeptPeople::Sender* ChatLines::keptSender(const KeptMessage& message) const {
  return message.sender ? library_.people().sender(*message.sender) : nullptr;
}

std::optional<ArchiveMedia> ChatLines::mediaOf(const KeptMessage& message) const {
  const KeptMedium* medium = message.medium ? library_.media().medium(*message.medium) : nullptr;
  if (medium == nullptr) return std::nullopt;
  ArchiveMedia media{.kind = MediaKind::classify(PathText::extension(medium->path)), .exported = medium->isThere};
  if (medium->isThere) media.relativePath = medium->place->relativePath();
  media.fileName = PathText::lastComponent(media.relativePath.value_or(medium->path));
  return media;
}

MessageWords::Context ChatLines::contextOf(const KeptChat& chat) const {
  return {.wording = {.style = style_, .nameOf = [this](const Person& person) { return nameOf(person); }},
          .mentioned = [this](std::string_view digits) { return nameOfDigits(digits); },
          .partner = chat.partner};
}

MessageWords::Answered ChatLines::answered(const KeptMessage& original) const {
  MessageWords::Answered answered{
      .id = std::to_string(original.key), .isOwner = original.isFromMe, .sender = senderOf(original)};
  if (!original.text.empty()) answered.text = BlobText::shortWords(original.text);
  if (!original.facts.empty()) answered.part = ContentWords::partOf(MessageFacts::read(original.facts).content);
  const KeptMedium* medium = original.medium ? library_.media().medium(*original.medium) : nullptr;
  if (medium != nullptr && answered.part == MessagePart::text) {
    answered.part = ContentWords::partOf(MediaKind::classify(PathText::extension(medium->path)));
  }
  return answered;
}

std::optional<std::string> ChatLines::nameOf(const Person& person) const {
  const KeptPeople::Known* known = library_.people().known(person.jid);
  if (known != nullptr && known->name) return known->name;
  return JID::hasServer(person.jid, UserJIDSuffix) ? NameResolver::formattedPhone(person.jid) : std::nullopt;
}

std::optional<std::string> ChatLines::nameOfDigits(std::string_view digits) const {
  for (const std::string_view server : {UserJIDSuffix, LIDJIDSuffix}) {
    const KeptPeople::Known* known = library_.people().known(std::string(digits).append(server));
    if (known == nullptr) continue;
    if (known->isOwner) return style_.youLabel;
    if (known->name) return known->name;
  }
  return std::nullopt;
}
