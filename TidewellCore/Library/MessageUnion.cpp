#include "TidewellCore/Library/MessageUnion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "TidewellCore/Library/MessageFactNames.h"
#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

// How much a message says: one that says less never takes the place of one that says more.
enum class Saying { nothing, placeholder, something };

// A page's word for what a message is that is more than a text or a file; empty elsewhere. It is the facts' own.
std::string kindOfPage(const KeptMessage& message) {
  const auto json = Json::parse(message.page.value_or(""));
  const auto* object = json ? json->as<Json::Object>() : nullptr;
  return object == nullptr ? std::string() : JSONMembers::valueOf<std::string>(*object, "kind");
}

bool isPlaceholder(std::string_view kind) { return kind == "deleted" || kind == "waiting" || kind == "unsupported"; }

Saying sayingOf(const KeptMessage& message, const MessageContent& content) {
  if (message.page && isPlaceholder(kindOfPage(message))) return Saying::placeholder;
  if (std::holds_alternative<WaitingMessage>(content) || std::holds_alternative<UnsupportedMessage>(content) ||
      std::holds_alternative<DeletedMessage>(content)) {
    return Saying::placeholder;
  }
  const bool isSaying =
      message.page || !message.text.empty() || message.medium || !std::holds_alternative<std::monostate>(content);
  return isSaying ? Saying::something : Saying::nothing;
}

// What only says that there is nothing any more.
bool isLoss(const MessageContent& content) {
  return std::holds_alternative<MissingMedia>(content) || std::holds_alternative<WaitingMessage>(content) ||
         std::holds_alternative<DeletedMessage>(content) || std::holds_alternative<UnsupportedMessage>(content);
}

std::string_view factsOf(const MessageDetails& details, TextArena& texts) {
  return texts.add(MessageFacts::write(details));
}

// The newer facts, with what the older ones say that the newer are silent about.
std::string_view mergedFacts(const KeptMessage& newer, const KeptMessage& older, TextArena& texts) {
  if (newer.facts == older.facts || older.facts.empty()) return newer.facts;
  MessageDetails details = MessageFacts::read(newer.facts);
  MessageDetails before = MessageFacts::read(older.facts);
  if (std::holds_alternative<std::monostate>(details.content) && !isLoss(before.content)) {
    details.content = std::move(before.content);
  }
  if (!details.quote) details.quote = std::move(before.quote);
  if (!details.heading) details.heading = std::move(before.heading);
  return factsOf(details, texts);
}

// Where the newer record says no more than that something was there, the older one's content stays.
KeptMessage keptContent(const KeptMessage& newer, const KeptMessage& older) {
  KeptMessage message = newer;
  message.text = older.text;
  message.facts = older.facts;
  message.page = older.page;
  if (older.medium) message.medium = older.medium;
  return message;
}

using Candidates = std::vector<std::uint32_t>;  // places among the kept messages
using Place = std::optional<std::uint32_t>;

// Finds the kept message that a told one is.
class Finder {
 public:
  Finder(std::span<const KeptMessage> kept) : kept_(kept), isFound_(kept.size()) {
    for (std::uint32_t place = 0; place < kept.size(); ++place) {
      const KeptMessage& message = kept[place];
      if (!message.stanzaID.empty()) byStanza_[message.stanzaID].push_back(place);
      (message.page ? byPagesSecond_ : bySecond_)[secondOf(message)].push_back(place);
    }
  }

  // For each told message the kept one; each is found once.
  std::vector<Place> find(std::span<const KeptMessage> told) {
    std::vector<Place> places(told.size());
    for (std::size_t number = 0; number < told.size(); ++number) places[number] = find(told[number]);
    if (!byPagesSecond_.empty()) findLonely(told, places);
    return places;
  }

  bool wasFound(std::uint32_t place) const { return isFound_[place]; }

 private:
  Place find(const KeptMessage& told) {
    if (const auto place = found(byStanza_, told.stanzaID, told)) return place;
    if (const auto place = found(bySecond_, secondOf(told), told)) return place;
    return found(byPagesSecond_, pagesSecondOf(told), told);
  }

  // Another phone's rows have other keys, and what is no plain text has other words: one message of a page and one
  // told message of its second that nothing else is like are one.
  void findLonely(std::span<const KeptMessage> told, std::vector<Place>& places) {
    std::unordered_map<std::uint32_t, Candidates> toldOfPages;
    for (std::uint32_t number = 0; number < told.size(); ++number) {
      const Place page = places[number] ? std::nullopt : onlyPageOf(told[number]);
      if (page) toldOfPages[*page].push_back(number);
    }
    for (const auto& [page, numbers] : toldOfPages) {
      if (numbers.size() > 1) continue;
      places[numbers.front()] = page;
      isFound_[page] = true;
    }
  }

  Place onlyPageOf(const KeptMessage& told) const {
    const auto bucket = byPagesSecond_.find(pagesSecondOf(told));
    if (bucket == byPagesSecond_.end()) return std::nullopt;
    Place only;
    for (const std::uint32_t place : bucket->second) {
      if (isFound_[place] || !mayBeOfPage(kept_[place], told)) continue;
      if (only) return std::nullopt;
      only = place;
    }
    return only;
  }

  // Pages tell whole seconds, the nearest.
  static double pagesSecondOf(const KeptMessage& told) { return told.time ? std::round(*told.time) : secondOf(told); }

  static double secondOf(const KeptMessage& message) {
    return message.time ? std::floor(*message.time) : -std::numeric_limits<double>::infinity();
  }

  template <typename Map, typename Key>
  Place found(const Map& map, const Key& key, const KeptMessage& told) {
    const auto bucket = map.find(key);
    if (bucket == map.end()) return std::nullopt;
    Place best;
    int bestScore = 0;
    for (const std::uint32_t place : bucket->second) {
      const int score = isFound_[place] ? 0 : likeness(kept_[place], told);
      if (score > bestScore) {
        best = place;
        bestScore = score;
      }
    }
    if (best) isFound_[*best] = true;
    return best;
  }

  static bool hasSameContent(const KeptMessage& a, const KeptMessage& b) {
    return a.text == b.text && a.facts == b.facts && a.medium == b.medium;
  }

  // 0 for two messages, more the surer it is that they are one.
  static int likeness(const KeptMessage& kept, const KeptMessage& told) {
    if (kept.page && !told.page) return likenessToPage(kept, told);
    const bool haveStanzas = !kept.stanzaID.empty() && !told.stanzaID.empty();
    if (haveStanzas && kept.stanzaID != told.stanzaID) return 0;
    if (kept.isFromMe != told.isFromMe) return 0;
    const int key = kept.key == told.key ? 1 : 0;
    if (haveStanzas) return 4 + 2 * (secondOf(kept) == secondOf(told) ? 1 : 0) + key;
    if (hasSameContent(kept, told)) return 2 + key + (kept.sender == told.sender ? 2 : 0);
    return key == 1 && (saysLittle(kept) || saysLittle(told)) ? 1 : 0;
  }

  // One row of the phone has the key that it had; another phone gave it another.
  static int likenessToPage(const KeptMessage& page, const KeptMessage& told) {
    if (!areOfOneSide(page, told)) return 0;
    if (page.key == told.key) return 3;
    if (page.medium && page.medium == told.medium) return 2;
    return !page.text.empty() && page.text == wordsOnPage(told) ? 1 : 0;
  }

  // Whether nothing speaks against their being one, though nothing shows it.
  static bool mayBeOfPage(const KeptMessage& page, const KeptMessage& told) {
    if (!areOfOneSide(page, told)) return false;
    const MessageContent content = MessageFacts::read(told.facts).content;
    const std::string kind = kindOfPage(page);
    if (isLoss(content) || isPlaceholder(kind) || kind == "missing") return true;
    if (kind != kindOf(content)) return false;
    return !kind.empty() || (told.medium && page.text == wordsOnPage(told));
  }

  // Pages name nobody as the sender of a notice.
  static bool areOfOneSide(const KeptMessage& page, const KeptMessage& told) {
    return page.isFromMe == told.isFromMe ||
           (!page.isFromMe && std::holds_alternative<Notice>(MessageFacts::read(told.facts).content));
  }

  // A link stands with a text, and is none of a page's kinds.
  static std::string_view kindOf(const MessageContent& content) {
    if (std::holds_alternative<LinkPreview>(content)) return {};
    return std::visit(
        []<typename Content>(const Content&) { return MessageFactNames::kindOf(std::type_identity<Content>()); },
        content);
  }

  // The words that a page has for a text, or for a file with what was written beside it.
  static std::string wordsOnPage(const KeptMessage& told) {
    const std::optional<std::string> heading = MessageFacts::read(told.facts).heading;
    std::string words = heading.value_or("");
    if (heading && !told.text.empty()) words += '\n';
    return ReadableText::cleaned(words.append(told.text));
  }

  // Its row is the one of a message that was deleted, or has not arrived yet.
  static bool saysLittle(const KeptMessage& message) {
    return sayingOf(message, MessageFacts::read(message.facts).content) != Saying::something;
  }

  std::span<const KeptMessage> kept_;
  std::vector<bool> isFound_;
  std::unordered_map<std::string_view, Candidates> byStanza_;
  std::unordered_map<double, Candidates> bySecond_;
  std::unordered_map<double, Candidates> byPagesSecond_;  // of those that only pages tell, which round their times
};

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
  const bool isPoorer = sayingOf(newer, content) < sayingOf(older, before);
  KeptMessage message = isPoorer ? keptContent(newer, older) : newer;
  if (!isPoorer && !older.page) {
    if (message.text.empty()) message.text = older.text;
    message.facts = mergedFacts(newer, older, texts);
  }
  const bool hasNoFile = !message.medium || (older.medium && !hasFile(*message.medium) && hasFile(*older.medium));
  if (hasNoFile) message.medium = older.medium;
  message.isDeletedLater |= older.isDeletedLater || (isPoorer && std::holds_alternative<DeletedMessage>(content));
  message.placeInSecond = std::max(newer.placeInSecond, older.placeInSecond);
  if (message.stanzaID.empty()) message.stanzaID = older.stanzaID;
  if (!message.sender && !message.isFromMe) message.sender = older.sender;
  return message;
}

std::vector<KeptMessage> MessageUnion::changes(const Side& kept, const Side& told, TextArena& texts,
                                               const HasFile& hasFile) {
  std::vector<KeptMessage> changed;
  Finder finder(kept.messages);
  FreeKeys keys(kept.messages, told.messages);
  // Whether the chat is as the told side says; what is not said at the date of its chat says when it was.
  const bool isNewest = told.isPart ? told.toldAt == kept.toldAt : told.toldAt >= kept.toldAt || kept.messages.empty();
  const double chatToldAt = isNewest ? told.toldAt : kept.toldAt;
  const std::vector<Place> places = finder.find(told.messages);
  for (std::size_t number = 0; number < told.messages.size(); ++number) {
    const KeptMessage& message = told.messages[number];
    const double toldAt = message.lastTold.value_or(told.toldAt);
    const Place place = places[number];
    KeptMessage outcome = message;
    if (!place) {
      outcome.key = keys.give(message.key);
      if (!isNewest) outcome.lastTold = toldAt;
      changed.push_back(outcome);
      continue;
    }
    const KeptMessage& known = kept.messages[*place];
    const double knownAt = known.lastTold.value_or(kept.toldAt);
    outcome = toldAt >= knownAt || known.page ? merged(message, known, texts, hasFile)
                                              : merged(known, message, texts, hasFile);
    outcome.key = known.key;
    const bool isInChat = !(isNewest ? message : known).lastTold;
    const double lastTold = std::max(toldAt, knownAt);
    outcome.lastTold = isInChat && lastTold <= chatToldAt ? std::nullopt : std::optional(lastTold);
    if (outcome != known) changed.push_back(outcome);
  }
  for (std::uint32_t place = 0; isNewest && !told.isPart && place < kept.messages.size(); ++place) {
    if (finder.wasFound(place) || kept.messages[place].lastTold) continue;
    changed.push_back(kept.messages[place]);
    changed.back().lastTold = kept.toldAt;
  }
  return changed;
}

std::int64_t MessageUnion::countOfNew(std::span<const KeptMessage> kept, std::span<const KeptMessage> told) {
  return std::ranges::count(Finder(kept).find(told), Place());
}
