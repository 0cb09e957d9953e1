#include "TidewellCore/Archive/MessageWords.h"

#include <algorithm>

#include "TidewellCore/Archive/ContentWords.h"
#include "TidewellCore/Archive/MessageInfo.h"
#include "TidewellCore/Platform/ReadableText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using ReadableText::cleaned;

// The copy that came along tells what was answered; where there is none, the original does.
ArchiveQuote quoteOf(const Quote& quote, const MessageWords::Context& context) {
  ArchiveQuote told{.part = quote.part};
  std::optional<std::string> copy = quote.words;
  if (context.answered) {
    if (!copy && told.part == MessagePart::text) {
      told.part = context.answered->part;
      copy = context.answered->text;
    }
    told.toID = context.answered->id;
    told.isOwner = context.answered->isOwner;
    told.name = Wording::line(context.answered->sender);
  } else if (quote.sender) {
    told.isOwner = quote.sender->isOwner;
    told.name = context.wording.name(*quote.sender);
  }
  const std::string words = Wording::line(copy.value_or(""));
  told.words = Mentions::named(words, Mentions::in(words, context.mentioned));
  if (told.words.empty()) told.words = ContentWords::label(told.part, context.wording);
  return told;
}

// Those of one emoji together; of equally frequent ones the earlier first.
std::vector<ArchiveReaction> reactionsOf(const std::vector<Reaction>& reactions, const Wording& wording) {
  std::vector<ArchiveReaction> told;
  for (const Reaction& reaction : reactions) {
    auto same = std::ranges::find(told, reaction.emoji, &ArchiveReaction::emoji);
    if (same == told.end()) same = told.insert(same, {.emoji = reaction.emoji});
    same->count += reaction.count;
    if (reaction.person) same->names.push_back(wording.name(*reaction.person));
  }
  std::ranges::stable_sort(told, std::greater(), &ArchiveReaction::count);
  return told;
}

// The facts of a kind that phones repeat where a text would stand.
struct Repeated {
  std::vector<std::string> operator()(const SharedContacts& shared) const {
    std::vector<std::string> names;
    for (const SharedContact& contact : shared.contacts) names.push_back(contact.name);
    return names;
  }
  std::vector<std::string> operator()(const SharedLocation& place) const { return said({place.name, place.address}); }
  std::vector<std::string> operator()(const Poll& poll) const { return {poll.question}; }
  std::vector<std::string> operator()(const Product& product) const {
    return said({product.title, product.description});
  }
  std::vector<std::string> operator()(const GroupInvite& invite) const { return said({invite.groupName}); }
  std::vector<std::string> operator()(const MissingMedia& media) const { return said({media.fileName}); }
  std::vector<std::string> operator()(const auto&) const { return {}; }

 private:
  static std::vector<std::string> said(std::initializer_list<std::optional<std::string>> facts) {
    std::vector<std::string> texts;
    for (const auto& fact : facts) texts.push_back(fact.value_or(""));
    return texts;
  }
};

// What the sender wrote beside the words of the kind, unless it is one of its facts.
std::string captionOf(const MessageContent& content, const ArchiveMessage& message) {
  const auto* invite = std::get_if<GroupInvite>(&content);
  const auto& written = invite != nullptr && invite->caption ? invite->caption : message.text;
  const std::string caption = cleaned(written.value_or(""));
  const std::string_view words = Text::trimmedPart(caption);
  const bool isRepeated = std::ranges::any_of(std::visit(Repeated(), content), [&](const std::string& fact) {
    return Text::trimmedPart(cleaned(fact)) == words;
  });
  return words.empty() || isRepeated ? std::string() : caption;
}

void setWords(const MessageContent& content, const MessageWords::Context& context, ArchiveDetails& details,
              ArchiveMessage& message) {
  const std::string words =
      ContentWords::of(content, {.wording = context.wording, .isFromMe = message.fromMe, .partner = context.partner});
  if (words.empty()) return;
  const std::string caption = captionOf(content, message);
  if (!caption.empty()) details.info.emplace("caption", caption);
  const bool isCaptionEnough = !caption.empty() && details.kind == ArchiveKind::missing;
  message.text = isCaptionEnough ? caption : caption.empty() ? words : words + "\n" + caption;
}

}  // namespace

void MessageWords::tell(const MessageDetails& details, const Context& context, ArchiveMessage& message) {
  ArchiveDetails told{.kind = MessageInfo::kindOf(details.content),
                      .info = MessageInfo::of(details.content, context.wording),
                      .marks = details.marks,
                      .reactions = reactionsOf(details.reactions, context.wording)};
  if (details.quote) told.quote = quoteOf(*details.quote, context);
  if (details.heading) message.text = message.text ? *details.heading + "\n" + *message.text : *details.heading;
  setWords(details.content, context, told, message);
  told.mentions = Mentions::in(message.text.value_or(""), context.mentioned);
  if (told.kind == ArchiveKind::notice) {
    message.sender.clear();
    message.senderJID.clear();
    message.fromMe = false;
  }
  message.details = told == ArchiveDetails() ? Boxed<ArchiveDetails>() : std::move(told);
}

std::string MessageWords::text(const ArchiveMessage& message) {
  const std::string text = cleaned(message.text.value_or(""));
  return message.details ? Mentions::named(text, message.details->mentions) : text;
}
