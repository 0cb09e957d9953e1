#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::string_view containerPrefix = "Message/";

// The JID that tells who wrote a message of a group: its own, unless that is
// missing or the group's; then the member's.
std::optional<std::string> groupSenderJID(const MessageRecord& message, const GroupMemberRecord* member) {
  const auto own = NameResolver::trimmedNonEmpty(message.fromJID);
  if (own && !JID::isGroup(*own)) return own;
  return member != nullptr && member->jid ? member->jid : own;
}

}  // namespace

void ChatStorageSnapshot::setDirectory(ContactDirectory completed) {
  directory = std::move(completed);
  chatPKsByCanonicalJID.clear();
  for (const auto& [pk, chat] : chats) chatPKsByCanonicalJID[canonicalChatJID(chat.jid)].push_back(pk);
}

const ChatRecord* ChatStorageSnapshot::chat(std::string_view jid) const {
  const std::string canonical = canonicalChatJID(jid);
  if (const auto found = chatsByJID.find(jid); found != chatsByJID.end()) return &found->second;
  if (const auto found = chatsByJID.find(canonical); found != chatsByJID.end()) return &found->second;
  const auto found = chatPKsByCanonicalJID.find(canonical);
  return found == chatPKsByCanonicalJID.end() ? nullptr : &chats.at(found->second.front());
}

std::string ChatStorageSnapshot::canonicalChatJID(std::string_view jid) const {
  std::string trimmed = Text::trimmed(jid);
  if (!JID::isLID(trimmed)) return trimmed;
  return directory.phoneJID(trimmed).value_or(trimmed);
}

std::vector<std::string> ChatStorageSnapshot::aliasJIDs(std::string_view jid) const {
  const std::string canonical = canonicalChatJID(jid);
  if (canonical.empty()) return {};
  std::vector<std::string> aliases{canonical};
  // A LID that stayed canonical has no known number.
  const auto lid = JID::isLID(canonical) ? std::nullopt : directory.lidJID(canonical);
  if (lid && *lid != canonical) aliases.push_back(*lid);
  return aliases;
}

std::string ChatStorageSnapshot::chatTitle(std::string_view jid) const {
  if (jid.empty() || jid == UnknownChatJID) return std::string(UnknownChatJID);
  return titleOf({.jid = std::string(jid)});
}

// A record that this backup does not hold is called by what it says itself.
std::string ChatStorageSnapshot::titleOf(const ChatRecord& record) const {
  const std::string canonical = canonicalChatJID(record.jid);
  const ChatRecord* known = canonical.empty() ? nullptr : chat(canonical);
  return NameResolver::chatTitle((known == nullptr ? record : *known).name, canonical, directory);
}

const MessageRecord* ChatStorageSnapshot::mediaMessage(std::string_view relativePath) const {
  auto found = mediaByRelativePath.find(std::string(relativePath));
  if (found == mediaByRelativePath.end()) {
    const bool isPrefixed = relativePath.starts_with(containerPrefix);
    found = mediaByRelativePath.find(isPrefixed ? std::string(relativePath.substr(containerPrefix.size()))
                                                : std::string(containerPrefix).append(relativePath));
  }
  if (found == mediaByRelativePath.end()) return nullptr;
  return &messagesByChat.at(found->second.chatPK).at(found->second.index);
}

std::string ChatStorageSnapshot::ownerJID(std::string_view mediaPath, const std::optional<std::string>& pathJID) const {
  const MessageRecord* message = mediaMessage(mediaPath);
  const auto owner = message != nullptr && message->chatPK ? chats.find(*message->chatPK) : chats.end();
  std::string jid = owner == chats.end() ? "" : canonicalChatJID(owner->second.jid);
  if (jid.empty() && pathJID) jid = canonicalChatJID(*pathJID);
  return jid.empty() ? std::string(UnknownChatJID) : jid;
}

std::string ChatStorageSnapshot::senderName(const MessageRecord& message, const ChatRecord* chat,
                                            const TranscriptStyle& style) const {
  if (message.isFromMe) return style.youLabel;
  if (chat != nullptr && !JID::isGroup(chat->jid)) {
    const std::string title = titleOf(*chat);
    return title.empty() || JID::isLID(title) ? style.unknownSenderLabel : title;
  }
  const GroupMemberRecord* member = directory.groupMember(message.groupMemberPK);
  const auto name = NameResolver::resolveIdentity(groupSenderJID(message, member), message.pushName, member, directory);
  return name.value_or(style.unknownSenderLabel);
}
