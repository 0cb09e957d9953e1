#include "TidewellCore/ChatData/ContactDirectory.h"

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Platform/Text.h"

namespace {

// The first entry under any of the JID's keys, or null.
template <typename Value>
const Value* find(const std::map<std::string, Value, std::less<>>& table, std::string_view jid) {
  for (const std::string& key : NameResolver::lookupKeys(jid)) {
    if (const auto found = table.find(key); found != table.end()) return &found->second;
  }
  return nullptr;
}

std::optional<std::string> copied(const std::string* text) {
  return text == nullptr ? std::nullopt : std::optional(*text);
}

}  // namespace

std::optional<std::string> AddressBookContact::bestName() const {
  for (const auto* name : {&fullName, &businessName, &givenName}) {
    if (auto trimmed = NameResolver::trimmedNonEmpty(*name)) return trimmed;
  }
  return std::nullopt;
}

const AddressBookContact* ContactDirectory::contact(std::string_view jid) const {
  const std::string trimmed = Text::trimmed(jid);
  if (!JID::isLID(trimmed)) return find(contactsByWhatsAppID, trimmed);
  if (const AddressBookContact* found = find(contactsByLID, trimmed)) return found;
  const auto phone = phoneJID(trimmed);
  return phone ? find(contactsByWhatsAppID, *phone) : nullptr;
}

std::optional<std::string> ContactDirectory::pushName(std::string_view jid) const {
  const std::string trimmed = Text::trimmed(jid);
  const std::string* name = find(profilePushName, trimmed);
  if (name == nullptr && JID::isLID(trimmed)) {
    if (const auto phone = phoneJID(trimmed)) name = find(profilePushName, *phone);
  }
  return name == nullptr || NameResolver::looksLikeOpaqueBlob(*name) ? std::nullopt : copied(name);
}

std::optional<std::string> ContactDirectory::phoneJID(std::string_view lid) const {
  return copied(find(lidToPhoneJID, lid));
}

std::optional<std::string> ContactDirectory::lidJID(std::string_view phone) const {
  return copied(find(phoneToLID, phone));
}

const GroupMemberRecord* ContactDirectory::groupMember(const std::optional<std::int64_t>& pk) const {
  const auto found = pk ? groupMembers.find(*pk) : groupMembers.end();
  return found == groupMembers.end() ? nullptr : &found->second;
}

void ContactDirectory::link(const std::string& lid, const std::string& phone) {
  if (!JID::isLID(lid) || !JID::hasServer(phone, UserJIDSuffix)) return;
  for (const std::string& key : NameResolver::lookupKeys(lid)) lidToPhoneJID.emplace(key, phone);
  for (const std::string& key : NameResolver::lookupKeys(phone)) phoneToLID.emplace(key, lid);
}

void ContactDirectory::addPushName(const std::string& jid, const std::string& name) {
  profilePushName.insert_or_assign(jid, name);
  for (const std::string& key : NameResolver::lookupKeys(jid)) profilePushName.emplace(key, name);
}
