#include "TidewellCore/ChatData/DisplayNames.h"

#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Platform/Text.h"

namespace {

std::optional<std::string> plausible(const std::optional<std::string>& name) {
  if (!name || !NameResolver::isPlausibleDisplayName(*name)) return std::nullopt;
  return Text::trimmed(*name);
}

std::optional<std::string> contactName(std::string_view jid, const ContactDirectory& directory) {
  const AddressBookContact* contact = directory.contact(jid);
  return contact == nullptr ? std::nullopt : plausible(contact->bestName());
}

}  // namespace

std::optional<std::string> DisplayNames::groupMemberDisplayName(const GroupMemberRecord& member) {
  const auto name = plausible(member.contactName);
  return name ? name : plausible(member.firstName);
}

std::string DisplayNames::chatTitle(std::string_view partnerName, std::string_view jid,
                                    const ContactDirectory& directory) {
  const std::string partner = Text::trimmed(partnerName);
  if (!NameResolver::isPlaceholderPartnerName(partner)) return partner;
  if (const auto name = contactName(jid, directory)) return *name;
  if (const auto phone = NameResolver::formattedPhone(jid)) return *phone;
  if (const auto name = NameResolver::trimmedNonEmpty(directory.pushName(jid))) return *name;
  return partner.empty() ? Text::trimmed(jid) : partner;
}

std::optional<std::string> DisplayNames::identityName(const std::optional<std::string>& jid,
                                                      const std::optional<std::string>& messagePushName,
                                                      const GroupMemberRecord* member,
                                                      const ContactDirectory& directory) {
  const std::string sender = jid.value_or("");
  if (const auto name = contactName(sender, directory)) return name;
  if (const auto name = member == nullptr ? std::nullopt : groupMemberDisplayName(*member)) return name;
  if (const auto name = NameResolver::trimmedNonEmpty(directory.pushName(sender))) return name;
  return plausible(messagePushName);
}

std::optional<std::string> DisplayNames::resolveIdentity(const std::optional<std::string>& jid,
                                                         const std::optional<std::string>& messagePushName,
                                                         const GroupMemberRecord* member,
                                                         const ContactDirectory& directory) {
  const auto name = identityName(jid, messagePushName, member, directory);
  return name ? name : NameResolver::formattedPhone(jid.value_or(""));
}
