#include "Tests/Fuzz/MessageTargets.h"

#include <array>
#include <string>

#include "TidewellCore/ChatData/GroupEvents.h"
#include "TidewellCore/ChatData/MessageDecoder.h"
#include "TidewellCore/ChatData/PollVotes.h"
#include "TidewellCore/ChatData/Reactions.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/ChatData/VCardText.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"

namespace {

const std::array<std::string, 1> own = {"1@lid"};

void check(const std::string& text) { precondition(Text::isValid(text), "text of a message is UTF-8"); }

void check(const std::optional<std::string>& text) {
  if (text) check(*text);
}

void check(std::optional<std::int64_t> seconds) {
  precondition(seconds.value_or(0) >= 0, "no time has a negative length");
}

void check(const Person& person) {
  precondition(person.isOwner == person.jid.empty(), "the owner alone has no JID");
  precondition(person.isOwner || StoredJID::checked(person.jid) == person.jid, "a person's JID is one");
}

void check(const std::optional<Person>& person) {
  if (person) check(*person);
}

void check(const SharedContacts& shared) {
  precondition(shared.contacts.size() <= VCardText::mostContacts, "contacts have a limit");
  for (const SharedContact& contact : shared.contacts) {
    check(contact.name);
    for (const std::string& phone : contact.phones) check(phone);
    for (const std::string& email : contact.emails) check(email);
  }
}

void check(const Poll& poll) {
  check(poll.question);
  precondition(poll.options.size() <= PollVotes::mostOptions, "options have a limit");
  for (const PollOption& option : poll.options) {
    check(option.words);
    for (const Person& voter : option.voters) check(voter);
  }
}

void check(const BusinessText& text) {
  for (const std::string& paragraph : text.paragraphs) check(paragraph);
  for (const BusinessButton& button : text.buttons) {
    check(button.words);
    check(button.target);
  }
}

void check(const Product& product) {
  check(product.title);
  check(product.description);
  precondition(!product.thousandths || (*product.thousandths >= 0 && product.currency), "a price is one");
}

void check(const Notice& notice) {
  check(notice.actor);
  for (const Person& target : notice.targets) check(target);
  precondition(notice.targets.size() <= GroupEvents::mostTargets, "targets have a limit");
  check(notice.parameter);
  check(notice.seconds);
}

void check(const GroupInvite& invite) {
  check(invite.groupName);
  check(invite.caption);
}

void check(const LinkPreview& preview) { check(preview.url); }
void check(const CallRecord& call) { check(call.seconds); }
void check(const DeletedMessage& message) { check(message.remover); }

// The others hold nothing of a blob.
void check(const std::monostate&) {}
void check(const SharedLocation&) {}
void check(const WaitingMessage&) {}
void check(const MissingMedia&) {}
void check(const UnsupportedMessage&) {}

void check(const MessageDetails& details) {
  std::visit([](const auto& content) { check(content); }, details.content);
  if (details.quote) {
    check(details.quote->stanzaID);
    check(details.quote->sender);
    check(details.quote->words);
  }
  precondition(details.reactions.size() <= Reactions::most, "reactions have a limit");
  for (const Reaction& reaction : details.reactions) {
    check(reaction.person);
    check(reaction.emoji);
    precondition(!reaction.emoji.empty() && reaction.count > 0 && reaction.milliseconds >= 0, "a reaction is one");
  }
}

}  // namespace

void MessageTargets::messageBlobs(ByteView input) {
  if (input.empty()) return;
  const ByteView blob = input.subspan(1);
  const DecodedMessage message =
      MessageDecoder::decode({.type = input[0], .text = "text", .ownJIDs = own, .metadata = blob, .receiptInfo = blob});
  if (message.details) check(*message.details);
}

void MessageTargets::groupEvent(ByteView input) {
  if (input.empty() || !Text::isValid(textOf(input.subspan(1)))) return;
  for (const bool isFromMe : {false, true}) {
    const Notice notice =
        GroupEvents::read({.code = input[0], .text = textOf(input.subspan(1)), .isFromMe = isFromMe, .ownJIDs = own});
    precondition(notice.code == input[0], "a notice keeps its code");
    check(notice);
  }
}

void MessageTargets::vCard(ByteView input) {
  check(VCardText::contacts(std::nullopt, textOf(input)));
  if (Text::isValid(textOf(input))) check(VCardText::contacts(textOf(input), textOf(input)));
}
