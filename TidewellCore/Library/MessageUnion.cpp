#include "TidewellCore/Library/MessageUnion.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "TidewellCore/Library/MessageFactNames.h"
#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Library/MessageMatching.h"
#include "TidewellCore/Library/MessageSaying.h"

namespace {

using MessageSaying::isLoss;

std::string_view factsOf(const MessageDetails& details, TextArena& texts) {
  return texts.add(MessageFacts::write(details));
}

// One overload for each type of a member. What is there stays.
struct Filler {
  static void fill(std::string& text, const std::string& other) {
    if (text.empty()) text = other;
  }
  template <typename Value>
  static void fill(std::optional<Value>& value, const std::optional<Value>& other) {
    if (!value) value = other;
  }
  static void fill(auto& /*value*/, const auto& /*other*/) {}

  // Of each member of a record.
  template <typename Record>
  static void fillRecord(Record& record, const Record& other) {
    const auto own = MessageFactNames::members(record);
    add(own, MessageFactNames::members(other), std::make_index_sequence<std::tuple_size_v<decltype(own)>>());
  }

 private:
  template <typename Own, typename Others, std::size_t... index>
  static void add(const Own& own, const Others& others, std::index_sequence<index...>) {
    (fill(std::get<index>(own).value, std::get<index>(others).value), ...);
  }
};

// What a message is, with what another record of it says of that. A link belongs to its words.
void fillContent(MessageContent& content, const MessageContent& other, bool haveSameWords) {
  if (std::holds_alternative<LinkPreview>(other) && !haveSameWords) return;
  if (std::holds_alternative<std::monostate>(content) && !isLoss(other)) content = other;
  if (content.index() != other.index()) return;
  std::visit([&]<typename Content>(Content& record) { Filler::fillRecord(record, std::get<Content>(other)); }, content);
}

void fillQuote(std::optional<Quote>& quote, const std::optional<Quote>& other) {
  const bool areOfOne =
      quote && other && (quote->stanzaID == other->stanzaID || quote->stanzaID.empty() || other->stanzaID.empty());
  if (!quote) quote = other;
  if (areOfOne) Filler::fillRecord(*quote, *other);
}

// `message` with what another record says that it is silent about. Reactions and marks are its own: they are taken
// back without a trace.
void fill(KeptMessage& message, const KeptMessage& other, TextArena& texts) {
  if (message.page || other.page) return;  // a page's facts are its own
  if (message.text.empty()) message.text = other.text;
  if (message.facts == other.facts || other.facts.empty()) return;
  MessageDetails details = MessageFacts::read(message.facts);
  const MessageDetails others = MessageFacts::read(other.facts);
  fillContent(details.content, others.content, message.text == other.text);
  fillQuote(details.quote, others.quote);
  if (!details.heading) details.heading = others.heading;
  message.facts = factsOf(details, texts);
}

// Keys that no message of the chat has.
class FreeKeys {
 public:
  FreeKeys(std::span<const KeptMessage> kept, std::span<const KeptMessage> told) {
    for (const KeptMessage& message : kept) take(message.key);
    for (const KeptMessage& message : told) last_ = std::max(last_, message.key);
  }

  std::int64_t give(std::int64_t wanted) {
    if (taken_.contains(wanted)) wanted = free();
    take(wanted);
    return wanted;
  }

 private:
  void take(std::int64_t key) {
    taken_.insert(key);
    last_ = std::max(last_, key);
  }

  // A key that somebody made up may be the last there is.
  std::int64_t free() {
    if (last_ < std::numeric_limits<std::int64_t>::max()) return last_ + 1;
    while (taken_.contains(lowest_)) ++lowest_;
    return lowest_;
  }

  std::unordered_set<std::int64_t> taken_;
  std::int64_t lowest_ = 1;  // below it no key is free
  std::int64_t last_ = 0;
};

}  // namespace

KeptMessage MessageUnion::merged(const KeptMessage& newer, const KeptMessage& older, TextArena& texts,
                                 const HasFile& hasFile) {
  const MessageContent content = MessageFacts::read(newer.facts).content;
  const MessageContent before = older.facts == newer.facts ? content : MessageFacts::read(older.facts).content;
  const auto amount = MessageSaying::of(newer, content);
  const auto amountBefore = MessageSaying::of(older, before);
  const bool isSaidBefore = newer.saidAt && older.saidAt && *newer.saidAt < *older.saidAt;
  const bool isPoorer = amount < amountBefore || (amount == amountBefore && isSaidBefore);
  const KeptMessage& telling = isPoorer ? older : newer;
  KeptMessage message = newer;
  message.text = telling.text;
  message.facts = telling.facts;
  message.page = telling.page;
  message.saidAt = telling.saidAt;
  if (telling.medium) message.medium = telling.medium;
  fill(message, isPoorer ? newer : older, texts);
  const bool hasNoFile = !message.medium || (older.medium && !hasFile(*message.medium) && hasFile(*older.medium));
  if (hasNoFile) message.medium = older.medium;
  message.isDeletedLater |= older.isDeletedLater || (isPoorer && std::holds_alternative<DeletedMessage>(content));
  message.placeInSecond = std::max(newer.placeInSecond, older.placeInSecond);
  if (message.stanzaID.empty()) message.stanzaID = older.stanzaID;
  if (!message.sender && !message.isFromMe) message.sender = older.sender;
  return message;
}

void MessageUnion::changes(const Side& kept, const Side& told, TextArena& texts, const HasFile& hasFile,
                           const std::function<void(const KeptMessage&)>& take) {
  const MessageMatching matching(kept.messages, told.messages);
  FreeKeys keys(kept.messages, told.messages);
  // Whether the chat is as the told side says; what is not said at the date of its chat says when it was.
  const bool isNewest = told.isPart ? told.toldAt == kept.toldAt : told.toldAt >= kept.toldAt;
  const double chatToldAt = isNewest ? told.toldAt : kept.toldAt;
  for (std::size_t number = 0; number < told.messages.size(); ++number) {
    KeptMessage message = told.messages[number];
    const double toldAt = message.lastTold.value_or(told.toldAt);
    const MessageMatching::Place place = matching.placeOf(number);
    if (!place) {
      message.key = keys.give(message.key);
      if (!isNewest) message.lastTold = toldAt;
      take(message);
      continue;
    }
    KeptMessage known = kept.messages[*place];
    const double knownAt = known.lastTold.value_or(kept.toldAt);
    const bool isInChat = !(isNewest ? message : known).lastTold;
    message.saidAt = message.saidAt.value_or(toldAt);
    known.saidAt = known.saidAt.value_or(knownAt);
    KeptMessage outcome = toldAt >= knownAt || known.page ? merged(message, known, texts, hasFile)
                                                          : merged(known, message, texts, hasFile);
    outcome.key = known.key;
    const double lastTold = std::max(toldAt, knownAt);
    outcome.lastTold = isInChat && lastTold <= chatToldAt ? std::nullopt : std::optional(lastTold);
    if (outcome.saidAt >= lastTold) outcome.saidAt.reset();
    if (outcome != kept.messages[*place]) take(outcome);
  }
  for (std::uint32_t place = 0; isNewest && !told.isPart && place < kept.messages.size(); ++place) {
    if (matching.wasFound(place) || kept.messages[place].lastTold) continue;
    KeptMessage gone = kept.messages[place];
    gone.lastTold = kept.toldAt;
    take(gone);
  }
}
