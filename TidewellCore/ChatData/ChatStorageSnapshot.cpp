#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "TidewellCore/ChatData/CanonicalPeople.h"
#include "TidewellCore/ChatData/DisplayNames.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::string_view containerPrefix = "Message/";

std::optional<std::string> copied(const std::optional<std::string_view>& text) {
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

// The JID that tells who wrote a message of a group: its own, unless that is
// missing or the group's; then the member's.
std::optional<std::string> groupSenderJID(const MessageRecord& message, const GroupMemberRecord* member) {
  const auto own = NameResolver::trimmedNonEmpty(copied(message.fromJID));
  if (own && !JID::isGroup(*own)) return own;
  return member != nullptr && member->jid ? member->jid : own;
}

// A message's place in its chat. Within a second the phone knows best: its own messages have fractions, and those
// that come in have none.
auto rank(const MessageRecord& message) {
  constexpr double beforeAll = -std::numeric_limits<double>::infinity();
  const double sent = message.date ? unixTime(*message.date) : beforeAll;
  return std::tuple(std::floor(sent), message.chatPK, message.sort, sent, message.pk);
}

std::vector<std::int64_t> keysOf(const std::vector<MessageRecord>& rows) {
  std::vector<std::int64_t> keys;
  keys.reserve(rows.size());
  for (const MessageRecord& row : rows) keys.push_back(row.pk);
  return keys;
}

// Puts the rows in order, `order` naming the row for each place, and returns the place of each row.
std::vector<std::uint32_t> bringInto(std::vector<std::uint32_t> order, std::vector<MessageRecord>& rows) {
  std::vector<std::uint32_t> places(order.size());
  for (std::uint32_t place = 0; place < order.size(); ++place) places[order[place]] = place;
  order = places;  // of what stands at each place while rows are swapped
  for (std::uint32_t at = 0; at < rows.size(); ++at) {
    while (order[at] != at) {
      const std::uint32_t place = order[at];
      std::swap(rows[at], rows[place]);
      std::swap(order[at], order[place]);
    }
  }
  return places;
}

}  // namespace

ChatStorageSnapshot::ChatStorageSnapshot(ChatTables tables) : tables_(std::move(tables)) {
  fileRecords();
  fileMembers();
  std::vector<MessageRecord>& rows = tables_.messages;
  if (!std::ranges::is_sorted(rows, {}, &MessageRecord::pk)) std::ranges::stable_sort(rows, {}, &MessageRecord::pk);
  const Keys keys = keysOf(rows);
  const Places places = arrange();
  attachMedia(keys, places);
  std::ranges::stable_sort(tables_.details, {}, &std::pair<std::int64_t, MessageDetails>::first);
  markDetailed(keys, places);
  unifyPeople(keys, places);
  fileOriginals(keys, places);
}

void ChatStorageSnapshot::fileRecords() {
  for (const auto& [pk, record] : tables_.chats) {
    if (!record.jid.empty()) recordsByJID_.insert_or_assign(record.jid, pk);
    recordsByCanonicalJID_.emplace(canonicalChatJID(record.jid).text(), pk);
  }
}

// Counts each chat's messages, which says where they will stand. Returns the chat of each record, by its place.
ChatStorageSnapshot::ChatsOfRecords ChatStorageSnapshot::listChats() {
  std::map<CanonicalJID, std::size_t> counts;
  for (const auto& [pk, record] : tables_.chats) {
    if (!JID::isStatus(record.jid)) counts[jidOfRecord(pk)];  // those without posts stand for nothing
  }
  std::unordered_map<std::int64_t, std::size_t> countsByRecord;
  for (const MessageRecord& row : tables_.messages) ++countsByRecord[row.chatPK];
  for (const auto& [pk, count] : countsByRecord) counts[jidOfRecord(pk)] += count;
  std::size_t first = 0;
  for (const auto& [jid, count] : counts) {
    chats_.push_back({.jid = jid, .firstMessage = first, .messageCount = count});
    first += count;
  }
  ChatsOfRecords chats;
  for (const auto& [pk, count] : countsByRecord) {
    chats[pk] = static_cast<std::size_t>(placeOf(jidOfRecord(pk)) - chats_.begin());
  }
  return chats;
}

// Rows lie about in the order in which messages came. Each chat's are brought
// together first, so that hardly anything is left to be sorted.
ChatStorageSnapshot::Places ChatStorageSnapshot::arrange() {
  std::vector<MessageRecord>& rows = tables_.messages;
  const ChatsOfRecords chatsOfRecords = listChats();
  Places order(rows.size());
  std::vector<std::size_t> next;
  for (const Chat& chat : chats_) next.push_back(chat.firstMessage);
  for (std::uint32_t row = 0; row < rows.size(); ++row) order[next[chatsOfRecords.at(rows[row].chatPK)]++] = row;
  const auto rankOfRow = [&](std::uint32_t row) { return rank(rows[row]); };
  for (const Chat& chat : chats_) {
    const std::span<std::uint32_t> ofChat = std::span(order).subspan(chat.firstMessage, chat.messageCount);
    if (!std::ranges::is_sorted(ofChat, {}, rankOfRow)) std::ranges::sort(ofChat, {}, rankOfRow);
  }
  return bringInto(order, rows);
}

void ChatStorageSnapshot::markDetailed(const Keys& keys, const Places& places) {
  for (const auto& [pk, details] : tables_.details) {
    for (auto found = std::ranges::lower_bound(keys, pk); found != keys.end() && *found == pk; ++found) {
      tables_.messages[places[static_cast<std::size_t>(found - keys.begin())]].hasDetails = true;
    }
  }
}

// A file that another item names already is the later item's.
void ChatStorageSnapshot::attachMedia(const Keys& keys, const Places& places) {
  mediaByRelativePath_.reserve(tables_.media.size());
  for (const MediaItemRecord& item : tables_.media) {
    const auto found = item.messagePK ? std::ranges::lower_bound(keys, *item.messagePK) : keys.end();
    if (found == keys.end() || *found != *item.messagePK) {
      const bool isOfSilent = item.messagePK && tables_.silentMessages.erase(*item.messagePK) > 0;
      ++(isOfSilent ? tables_.unread.withoutChat : tables_.unread.ofFiles);
      continue;
    }
    const std::uint32_t place = places[static_cast<std::size_t>(found - keys.begin())];
    tables_.messages[place].mediaLocalPath = item.localPath;
    mediaByRelativePath_.insert_or_assign(item.localPath, place);
    if (!item.sentDigest.empty()) sentDigests_.insert_or_assign(item.localPath, item.sentDigest);
  }
}

std::vector<std::string> ChatStorageSnapshot::memberJIDs(const CanonicalJID& chat) const {
  const auto found = membersByChat_.find(chat);
  if (found == membersByChat_.end()) return {};
  return {found->second.begin(), found->second.end()};
}

void ChatStorageSnapshot::fileMembers() {
  for (const auto& [pk, member] : directory().groupMembers) {
    if (!member.jid) continue;
    const std::string jid = canonicalChatJID(*member.jid).text();
    const GroupMemberRecord*& filed = membersByJID_[jid];
    if (filed == nullptr || !DisplayNames::groupMemberDisplayName(*filed)) filed = &member;
    const auto chat = member.chatPK && member.isActive ? tables_.chats.find(*member.chatPK) : tables_.chats.end();
    if (chat != tables_.chats.end()) membersByChat_[canonicalChatJID(chat->second.jid)].insert(jid);
  }
}

void ChatStorageSnapshot::unifyPeople(const Keys& keys, const Places& places) {
  for (const std::string& jid : tables_.ownJIDs) ownJIDs_.insert(canonicalChatJID(jid).text());
  const auto known = [this](const std::string& jid) { return person(jid); };
  for (auto& [pk, details] : tables_.details) {
    const auto key = std::ranges::lower_bound(keys, pk);
    const MessageRecord& message = tables_.messages[places[static_cast<std::size_t>(key - keys.begin())]];
    const auto sender = groupSenderJID(message, directory().groupMember(message.groupMemberPK));
    const bool isGroup = JID::isGroup(jidOfRecord(message.chatPK).text());
    CanonicalPeople::unify(details, known, canonicalChatJID(sender.value_or("")).text(), isGroup);
  }
}

// Most messages are answered by nobody, so only those that are have an entry.
void ChatStorageSnapshot::fileOriginals(const Keys& keys, const Places& places) {
  std::unordered_set<std::string_view> wanted;
  for (const auto& [pk, details] : tables_.details) {
    if (details.quote && !details.quote->stanzaID.empty()) wanted.insert(details.quote->stanzaID);
  }
  if (wanted.empty()) return;
  for (std::size_t row = 0; row < keys.size(); ++row) {
    const auto& stanzaID = tables_.messages[places[row]].stanzaID;
    if (stanzaID && wanted.contains(*stanzaID)) originals_.emplace_back(*stanzaID, places[row]);
  }
  std::ranges::sort(originals_);
}

const MessageDetails* ChatStorageSnapshot::details(const MessageRecord& message) const {
  if (!message.hasDetails) return nullptr;  // few have any, and looking for them takes as long as reading the message
  const auto found =
      std::ranges::lower_bound(tables_.details, message.pk, {}, &std::pair<std::int64_t, MessageDetails>::first);
  return found != tables_.details.end() && found->first == message.pk ? &found->second : nullptr;
}

// The messages of a chat stand side by side, so those of one ID do, too.
const MessageRecord* ChatStorageSnapshot::original(const MessageRecord& answer, const Quote& quote) const {
  const auto chat = placeOf(jidOfRecord(answer.chatPK));
  if (chat == chats_.end() || quote.stanzaID.empty()) return nullptr;
  const std::pair from(std::string_view(quote.stanzaID), static_cast<std::uint32_t>(chat->firstMessage));
  for (auto found = std::ranges::lower_bound(originals_, from); found != originals_.end(); ++found) {
    const auto& [stanzaID, place] = *found;
    if (stanzaID != quote.stanzaID || place >= chat->firstMessage + chat->messageCount) break;
    if (tables_.messages[place].pk != answer.pk) return &tables_.messages[place];
  }
  return nullptr;
}

std::vector<ChatStorageSnapshot::Chat>::const_iterator ChatStorageSnapshot::placeOf(const CanonicalJID& jid) const {
  const auto found = std::ranges::lower_bound(chats_, jid, {}, &Chat::jid);
  return found != chats_.end() && found->jid == jid ? found : chats_.end();
}

std::span<const MessageRecord> ChatStorageSnapshot::messages(const Chat& chat) const {
  return messages().subspan(chat.firstMessage, chat.messageCount);
}

std::span<const MessageRecord> ChatStorageSnapshot::messages(const CanonicalJID& jid) const {
  const auto chat = placeOf(jid);
  return chat == chats_.end() ? std::span<const MessageRecord>() : messages(*chat);
}

const ChatRecord* ChatStorageSnapshot::chat(std::string_view jid) const {
  const CanonicalJID canonical = canonicalChatJID(jid);
  auto found = recordsByJID_.find(jid);
  if (found == recordsByJID_.end()) found = recordsByJID_.find(canonical.text());
  if (found != recordsByJID_.end()) return &tables_.chats.at(found->second);
  const auto first = recordsByCanonicalJID_.find(canonical.text());
  return first == recordsByCanonicalJID_.end() ? nullptr : &tables_.chats.at(first->second);
}

CanonicalJID ChatStorageSnapshot::canonicalChatJID(std::string_view jid) const {
  std::string trimmed = Text::trimmed(jid);
  if (JID::hasServer(trimmed, LIDStatusJIDSuffix)) {
    const auto phone = directory().phoneJID(JID::ownerOfStatus(trimmed));
    return CanonicalJID(phone ? std::string(JID::userPart(*phone)).append(StatusJIDSuffix) : std::move(trimmed));
  }
  if (!JID::isLID(trimmed)) return CanonicalJID(std::move(trimmed));
  return CanonicalJID(directory().phoneJID(trimmed).value_or(trimmed));
}

CanonicalJID ChatStorageSnapshot::known(CanonicalJID jid) {
  return jid.text().empty() ? CanonicalJID(std::string(UnknownChatJID)) : std::move(jid);
}

CanonicalJID ChatStorageSnapshot::jidOfRecord(std::int64_t pk) const {
  const auto record = tables_.chats.find(pk);
  return known(record == tables_.chats.end() ? CanonicalJID("") : canonicalChatJID(record->second.jid));
}

std::vector<std::string> ChatStorageSnapshot::aliasJIDs(std::string_view jid) const {
  const std::string canonical = canonicalChatJID(jid).text();
  if (canonical.empty()) return {};
  std::vector<std::string> aliases{canonical};
  // A LID that stayed canonical has no known number.
  if (JID::isLID(canonical) || JID::hasServer(canonical, LIDStatusJIDSuffix)) return aliases;
  const auto lid = directory().lidJID(JID::ownerOfStatus(canonical));
  if (!lid || *lid == canonical) return aliases;
  const bool isStatus = JID::isStatus(canonical);
  aliases.push_back(isStatus ? std::string(JID::userPart(*lid)).append(LIDStatusJIDSuffix) : *lid);
  return aliases;
}

std::string ChatStorageSnapshot::chatTitle(std::string_view jid) const {
  if (jid.empty() || jid == UnknownChatJID) return std::string(UnknownChatJID);
  return titleOf({.jid = std::string(jid)});
}

std::string ChatStorageSnapshot::partnerName(std::string_view jid) const {
  if (!JID::hasServer(jid, UserJIDSuffix) && !JID::isLID(jid)) return {};
  std::string title = chatTitle(jid);
  return JID::isLID(title) ? std::string() : title;
}

// The name of a chat's person, also of one that holds their status posts.
std::string ChatStorageSnapshot::personTitle(const ChatRecord& record) const {
  if (!JID::isStatus(record.jid)) return titleOf(record);
  const std::string person = JID::ownerOfStatus(record.jid);
  return NameResolver::isPlaceholderPartnerName(record.name) ? titleOf({.jid = person}) : Text::trimmed(record.name);
}

// A record that this backup does not hold is called by what it says itself.
std::string ChatStorageSnapshot::titleOf(const ChatRecord& record) const {
  if (JID::isStatus(record.jid)) return personTitle(record) + " (status)";
  const std::string canonical = canonicalChatJID(record.jid).text();
  const ChatRecord* held = canonical.empty() ? nullptr : chat(canonical);
  return DisplayNames::chatTitle((held == nullptr ? record : *held).name, canonical, directory());
}

const MessageRecord* ChatStorageSnapshot::mediaMessage(std::string_view relativePath) const {
  auto found = mediaByRelativePath_.find(relativePath);
  if (found == mediaByRelativePath_.end() && relativePath.starts_with(containerPrefix)) {
    found = mediaByRelativePath_.find(relativePath.substr(containerPrefix.size()));
  } else if (found == mediaByRelativePath_.end()) {
    found = mediaByRelativePath_.find(std::string(containerPrefix).append(relativePath));
  }
  return found == mediaByRelativePath_.end() ? nullptr : &tables_.messages[found->second];
}

std::string_view ChatStorageSnapshot::sentDigest(std::string_view relativePath) const {
  const auto found = sentDigests_.find(relativePath);
  return found == sentDigests_.end() ? std::string_view() : found->second;
}

std::optional<Date> ChatStorageSnapshot::mediaDate(std::string_view relativePath) const {
  const MessageRecord* message = mediaMessage(relativePath);
  return message == nullptr ? std::nullopt : message->date;
}

std::vector<std::string_view> ChatStorageSnapshot::mediaPaths() const {
  std::vector<std::string_view> paths;
  paths.reserve(mediaByRelativePath_.size());
  for (const auto& [path, place] : mediaByRelativePath_) paths.push_back(path);
  return paths;
}

CanonicalJID ChatStorageSnapshot::ownerJID(std::string_view mediaPath,
                                           const std::optional<std::string>& pathJID) const {
  const MessageRecord* message = mediaMessage(mediaPath);
  const auto owner = message == nullptr ? tables_.chats.end() : tables_.chats.find(message->chatPK);
  CanonicalJID jid = canonicalChatJID(owner == tables_.chats.end() ? "" : owner->second.jid);
  if (jid.text().empty() && pathJID) jid = canonicalChatJID(*pathJID);
  return known(std::move(jid));
}

std::optional<std::string> ChatStorageSnapshot::name(const Person& person) const {
  if (auto known = knownName(person.jid)) return known;
  return JID::hasServer(person.jid, UserJIDSuffix) ? NameResolver::formattedPhone(person.jid) : std::nullopt;
}

const GroupMemberRecord* ChatStorageSnapshot::member(const std::string& jid) const {
  const auto found = membersByJID_.find(canonicalChatJID(jid).text());
  return found == membersByJID_.end() ? nullptr : found->second;
}

std::optional<std::string> ChatStorageSnapshot::knownName(const std::string& jid) const {
  const GroupMemberRecord* known = member(jid);
  const ChatRecord* record = chat(jid);
  const bool isKnown = known != nullptr || record != nullptr || directory().contact(jid) || directory().pushName(jid);
  if (!isKnown) return std::nullopt;
  if (auto name = DisplayNames::identityName(jid, std::nullopt, known, directory())) return name;
  const std::string title = record == nullptr ? "" : titleOf(*record);
  return title.empty() || JID::isLID(title) ? NameResolver::formattedPhone(jid) : std::optional(title);
}

Person ChatStorageSnapshot::person(const std::string& jid) const {
  std::string canonical = canonicalChatJID(jid).text();
  return ownJIDs_.contains(canonical) ? Person{.isOwner = true} : Person{.jid = std::move(canonical)};
}

std::optional<std::string> ChatStorageSnapshot::nameOfDigits(std::string_view digits,
                                                             const TranscriptStyle& style) const {
  for (const std::string_view server : {UserJIDSuffix, LIDJIDSuffix}) {
    const std::string jid = std::string(digits).append(server);
    if (person(jid).isOwner) return style.youLabel;
    if (auto name = knownName(jid)) return name;
  }
  return std::nullopt;
}

ChatStorageSnapshot::Sender ChatStorageSnapshot::sender(const MessageRecord& message) const {
  const auto record = tables_.chats.find(message.chatPK);
  if (record != tables_.chats.end() && !JID::isGroup(record->second.jid)) {
    std::string title = personTitle(record->second);
    const bool isNameless = title.empty() || JID::isLID(title);
    return {.jid = canonicalChatJID(JID::ownerOfStatus(record->second.jid)).text(),
            .name = isNameless ? std::nullopt : std::optional(std::move(title))};
  }
  const GroupMemberRecord* member = directory().groupMember(message.groupMemberPK);
  const auto jid = groupSenderJID(message, member);
  return {.jid = canonicalChatJID(jid.value_or("")).text(),
          .name = DisplayNames::resolveIdentity(jid, copied(message.pushName), member, directory())};
}

std::string ChatStorageSnapshot::senderName(const MessageRecord& message, const TranscriptStyle& style) const {
  if (message.isFromMe) return style.youLabel;
  return sender(message).name.value_or(style.unknownSenderLabel);
}
