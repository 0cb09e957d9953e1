#include "TidewellCore/Library/MessageMatching.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>

#include "TidewellCore/Library/MessageFactNames.h"
#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Library/MessageSaying.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using Place = MessageMatching::Place;
using Candidates = std::vector<std::uint32_t>;  // places among the kept messages
using MessageSaying::isLoss;
using MessageSaying::isPlaceholder;
using MessageSaying::kindOnPage;

// How sure it is that two messages are one, by what they have in common. Pairs that have a stanza in common come
// first, then those that have all that they say.
constexpr int likenessOfStanzas = 16;
constexpr int likenessOfContent = 8;

double secondOf(const KeptMessage& message) {
  return message.time ? std::floor(*message.time) : -std::numeric_limits<double>::infinity();
}

// Pages tell whole seconds, the nearest.
double pagesSecondOf(const KeptMessage& told) { return told.time ? std::round(*told.time) : secondOf(told); }

MessageContent contentOf(const KeptMessage& message) { return MessageFacts::read(message.facts).content; }

// Rows say more or less than they did, but never something else.
bool mayBeOfOneKind(const MessageContent& before, const MessageContent& now) {
  return before.index() == now.index() || std::holds_alternative<std::monostate>(before) ||
         std::holds_alternative<std::monostate>(now) || isLoss(before) || isLoss(now);
}

// Of two of one second and side without a stanza in common, which say different things: somebody reacted or
// voted meanwhile, changed the words, or took them back.
int likenessOfRows(const KeptMessage& kept, const KeptMessage& told) {
  const bool isSameRow = kept.key == told.key;
  const bool haveSameWords = kept.text == told.text && kept.medium == told.medium;
  const bool isTelling = !told.text.empty() || told.medium;
  if (!isSameRow && !(isTelling && haveSameWords && kept.sender == told.sender)) return 0;
  if (!mayBeOfOneKind(contentOf(kept), contentOf(told))) return 0;
  return (isSameRow ? 1 : 0) + (haveSameWords ? 2 : 0) + (kept.sender == told.sender ? 4 : 0);
}

// 0 for two messages, more the surer it is that they are one.
int likeness(const KeptMessage& kept, const KeptMessage& told) {
  const bool haveStanzas = !kept.stanzaID.empty() && !told.stanzaID.empty();
  if (haveStanzas && kept.stanzaID != told.stanzaID) return 0;
  if (kept.isFromMe != told.isFromMe) return 0;
  const int key = kept.key == told.key ? 1 : 0;
  if (haveStanzas) return likenessOfStanzas + (secondOf(kept) == secondOf(told) ? 2 : 0) + key;
  const bool isSame = kept.text == told.text && kept.facts == told.facts && kept.medium == told.medium;
  if (isSame) return likenessOfContent + (kept.sender == told.sender ? 2 : 0) + key;
  return likenessOfRows(kept, told);
}

// Pages name nobody as the sender of a notice.
bool areOfOneSide(const KeptMessage& page, const KeptMessage& told) {
  return page.isFromMe == told.isFromMe || (!page.isFromMe && std::holds_alternative<Notice>(contentOf(told)));
}

// The words that a page has for a text, or for a file with what was written beside it.
std::string wordsOnPage(const KeptMessage& told) {
  const std::optional<std::string> heading = MessageFacts::read(told.facts).heading;
  std::string words = heading.value_or("");
  if (heading && !told.text.empty()) words += '\n';
  return ReadableText::cleaned(words.append(told.text));
}

// One row of the phone has the key that it had; another phone gave it another, and may have given this one to
// another message.
int likenessToPage(const KeptMessage& page, const KeptMessage& told) {
  if (!areOfOneSide(page, told)) return 0;
  const int key = page.key == told.key ? 1 : 0;
  if (page.medium && page.medium == told.medium) return likenessOfContent + 2 + key;
  if (!page.text.empty() && page.text == wordsOnPage(told)) return likenessOfContent + key;
  return key;
}

// A link stands with a text, and is none of a page's kinds.
std::string_view kindOf(const MessageContent& content) {
  if (std::holds_alternative<LinkPreview>(content)) return {};
  return std::visit(
      []<typename Content>(const Content&) { return MessageFactNames::kindOf(std::type_identity<Content>()); },
      content);
}

// Whether nothing speaks against their being one, though nothing shows it.
bool mayBeOfPage(const KeptMessage& page, const KeptMessage& told) {
  if (!areOfOneSide(page, told)) return false;
  const MessageContent content = contentOf(told);
  const std::string kind = kindOnPage(page);
  if (isLoss(content) || isPlaceholder(kind) || kind == "missing") return true;
  if (kind != kindOf(content)) return false;
  return !kind.empty() || (told.medium && page.text == wordsOnPage(told));
}

class Search {
 public:
  Search(std::span<const KeptMessage> kept, std::span<const KeptMessage> told)
      : kept_(kept), told_(told), places_(told.size()), isFound_(kept.size()) {
    for (std::uint32_t place = 0; place < kept.size(); ++place) {
      const KeptMessage& message = kept[place];
      if (!message.stanzaID.empty()) byStanza_[message.stanzaID].push_back(place);
      (message.page ? byPagesSecond_ : bySecond_)[secondOf(message)].push_back(place);
    }
  }

  void run() {
    for (const int least : {likenessOfStanzas, likenessOfContent, 1}) {
      for (std::size_t number = 0; number < told_.size(); ++number) {
        if (!places_[number]) places_[number] = find(told_[number], least);
      }
    }
    if (!byPagesSecond_.empty()) findLonely();
  }

  std::vector<Place> takePlaces() { return std::move(places_); }
  std::vector<bool> takeFound() { return std::move(isFound_); }

 private:
  // One that is at least so like.
  Place find(const KeptMessage& told, int least) {
    if (const auto place = found(byStanza_, told.stanzaID, told, least)) return place;
    if (const auto place = found(bySecond_, secondOf(told), told, least)) return place;
    return found(byPagesSecond_, pagesSecondOf(told), told, least);
  }

  template <typename Map, typename Key>
  Place found(const Map& map, const Key& key, const KeptMessage& told, int least) {
    const auto bucket = map.find(key);
    if (bucket == map.end()) return std::nullopt;
    Place best;
    int bestLikeness = least - 1;
    for (const std::uint32_t place : bucket->second) {
      if (isFound_[place]) continue;
      const KeptMessage& kept = kept_[place];
      const int likenessOfBoth = kept.page && !told.page ? likenessToPage(kept, told) : likeness(kept, told);
      if (likenessOfBoth <= bestLikeness) continue;
      best = place;
      bestLikeness = likenessOfBoth;
    }
    if (best) isFound_[*best] = true;
    return best;
  }

  // Another phone's rows have other keys, and what is no plain text has other words: one message of a page and one
  // told message of its second that nothing else is like are one.
  void findLonely() {
    std::unordered_map<std::uint32_t, std::vector<std::size_t>> toldOfPages;
    for (std::size_t number = 0; number < told_.size(); ++number) {
      const Place page = places_[number] ? std::nullopt : onlyPageOf(told_[number]);
      if (page) toldOfPages[*page].push_back(number);
    }
    for (const auto& [page, numbers] : toldOfPages) {
      if (numbers.size() > 1) continue;
      places_[numbers.front()] = page;
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

  std::span<const KeptMessage> kept_;
  std::span<const KeptMessage> told_;
  std::vector<Place> places_;
  std::vector<bool> isFound_;
  std::unordered_map<std::string_view, Candidates> byStanza_;
  std::unordered_map<double, Candidates> bySecond_;
  std::unordered_map<double, Candidates> byPagesSecond_;  // of those that only pages tell, which round their times
};

}  // namespace

MessageMatching::MessageMatching(std::span<const KeptMessage> kept, std::span<const KeptMessage> told) {
  newCount_ = std::ssize(told);
  if (kept.empty()) return;
  Search search(kept, told);
  search.run();
  places_ = search.takePlaces();
  isFound_ = search.takeFound();
  newCount_ = std::ranges::count(places_, Place());
}
