#include "TidewellCore/Library/ToldChat.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Library/MessageUnion.h"

namespace {

double secondOf(const KeptMessage& message) {
  return message.time ? std::floor(*message.time) : -std::numeric_limits<double>::infinity();
}

// What a row says of who sent it: its chat's and its member's row, a JID, and the name that they gave themselves.
using SaidOfSender = std::tuple<std::int64_t, std::optional<std::int64_t>, std::optional<std::string_view>,
                                std::optional<std::string_view>>;

class Telling {
 public:
  Telling(const ChatStorageSnapshot& snapshot, KeptPeople& people, MediaLedger& ledger)
      : snapshot_(snapshot), people_(people), ledger_(ledger) {}

  void add(const MessageRecord& record) {
    KeptMessage message{.key = record.pk,
                        .isFromMe = record.isFromMe,
                        .stanzaID = record.stanzaID.value_or(""),
                        .text = record.text.value_or("")};
    if (record.date) message.time = unixTime(*record.date);
    if (!record.isFromMe) message.sender = senderOf(record);
    if (record.mediaLocalPath) message.medium = ledger_.enter(*record.mediaLocalPath);
    if (const MessageDetails* details = snapshot_.details(record)) {
      message.facts = told_.texts.add(MessageFacts::write(*details));
    }
    take(message, record.chatPK);
  }

  KeptMessages finish() { return std::move(told_); }

 private:
  // Names are put together of many tables, so they are asked once for what rows say alike.
  std::int64_t senderOf(const MessageRecord& record) {
    const SaidOfSender said{record.chatPK, record.groupMemberPK, record.fromJID, record.pushName};
    const auto [entry, isNew] = senders_.try_emplace(said, 0);
    if (isNew) {
      ChatStorageSnapshot::Sender sender = snapshot_.sender(record);
      entry->second = people_.enter({.jid = std::move(sender.jid), .name = std::move(sender.name)});
    }
    return entry->second;
  }

  // Records come in the order of their dates, so those of one second follow one another.
  void take(KeptMessage& message, std::int64_t record) {
    auto& list = told_.list;
    const bool isSameSecond = !list.empty() && secondOf(list.back()) == secondOf(message);
    message.placeInSecond = isSameSecond ? list.back().placeInSecond + 1 : 0;
    if (isSameSecond && isTwin(message, record)) return;
    list.push_back(message);
    records_.push_back(record);
  }

  // The same message under the other identity of its chat's person.
  bool isTwin(const KeptMessage& message, std::int64_t record) {
    auto& list = told_.list;
    if (message.stanzaID.empty()) return false;
    for (std::size_t place = list.size(); place-- > 0 && secondOf(list[place]) == secondOf(message);) {
      KeptMessage& other = list[place];
      const bool areRecordsOfOne = other.stanzaID == message.stanzaID && other.isFromMe == message.isFromMe &&
                                   other.text == message.text && records_[place] != record;
      if (!areRecordsOfOne || (other.medium && message.medium && other.medium != message.medium)) continue;
      const std::int64_t atPlace = other.placeInSecond;
      other = MessageUnion::merged(other, message, told_.texts);
      other.placeInSecond = atPlace;
      return true;
    }
    return false;
  }

  const ChatStorageSnapshot& snapshot_;
  KeptPeople& people_;
  MediaLedger& ledger_;
  KeptMessages told_;
  std::vector<std::int64_t> records_;  // of the chat that each message was read from
  std::map<SaidOfSender, std::int64_t> senders_;
};

// Puts everything behind one another, so that nothing can stand for something else.
class Digest {
 public:
  void add(std::string_view text) {
    add(static_cast<std::int64_t>(text.size()));
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    if (bytes_.size() >= fullSize) fold();
  }
  void add(std::int64_t number) { addBytes(&number, sizeof number); }
  void add(double number) { addBytes(&number, sizeof number); }
  template <typename Value>
  void add(const std::optional<Value>& value) {
    add(std::int64_t{value.has_value()});
    if (value) add(*value);
  }
  // Many of them are kept, so none with the memory of what it was made from.
  Bytes finish() {
    fold();
    return {bytes_.begin(), bytes_.end()};
  }

 private:
  static constexpr std::size_t fullSize = 1 << 20;

  void addBytes(const void* data, std::size_t size) {
    const auto* begin = static_cast<const std::uint8_t*>(data);
    bytes_.insert(bytes_.end(), begin, begin + size);
  }
  // What there is gives way to its digest, so that memory holds a megabyte of it.
  void fold() {
    const std::array digest = sha256(bytes_);
    bytes_.assign(digest.begin(), digest.end());
  }

  Bytes bytes_;
};

double secondOf(const MessageRecord& record) {
  return record.date ? std::floor(unixTime(*record.date)) : -std::numeric_limits<double>::infinity();
}

// Those of all identities of a chat, undated ones first, then oldest first; those of one second by identities.
std::vector<const MessageRecord*> recordsOf(const ChatStorageSnapshot& snapshot, const Scope& scope,
                                            const std::vector<CanonicalJID>& jids) {
  std::vector<const MessageRecord*> records;
  for (const CanonicalJID& jid : jids) {
    for (const MessageRecord& record : scope.messages(snapshot, jid)) records.push_back(&record);
  }
  const auto second = [](const MessageRecord* record) { return secondOf(*record); };
  if (jids.size() > 1) std::ranges::stable_sort(records, {}, second);
  return records;
}

Bytes digestOf(const ToldChat& told) {
  Digest digest;
  digest.add(told.title);
  digest.add(told.partner);
  digest.add(std::ssize(told.members));
  for (const std::string& jid : told.members) digest.add(jid);
  for (const KeptMessage& message : told.messages.list) {
    digest.add(message.key);
    digest.add(message.time);
    digest.add(message.placeInSecond * 2 + (message.isFromMe ? 1 : 0));
    digest.add(message.sender);
    digest.add(message.stanzaID);
    digest.add(message.text);
    digest.add(message.medium);
    digest.add(message.facts);
  }
  return digest.finish();
}

}  // namespace

ToldChat ToldChat::of(const ChatStorageSnapshot& snapshot, const Scope& scope, const std::vector<CanonicalJID>& jids,
                      KeptPeople& people, MediaLedger& ledger) {
  Telling telling(snapshot, people, ledger);
  for (const MessageRecord* record : recordsOf(snapshot, scope, jids)) telling.add(*record);
  const std::string& jid = jids.front().text();
  ToldChat told{.messages = telling.finish(),
                .title = snapshot.chatTitle(jid),
                .partner = snapshot.partnerName(jid),
                .members = snapshot.memberJIDs(jids.front())};
  told.digest = digestOf(told);
  return told;
}
