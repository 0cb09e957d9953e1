#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/ChatData/ChatRecords.h"

// One row of WhatsApp's own address book.
struct AddressBookContact {
  std::optional<std::string> fullName;
  std::optional<std::string> givenName;
  std::optional<std::string> businessName;
  std::optional<std::string> whatsAppID;  // a full JID
  std::optional<std::string> lid;         // a full JID
  std::optional<std::string> phoneNumber;

  // The full name, else the business's, else the given name, trimmed.
  std::optional<std::string> bestName() const;

  bool operator==(const AddressBookContact&) const = default;
};

// Every source of names. Tables keyed by text are filled and searched under
// the lookup keys of NameResolver, so that a JID is found however it is written.
struct ContactDirectory {
  std::map<std::string, AddressBookContact, std::less<>> contactsByWhatsAppID;
  std::map<std::string, AddressBookContact, std::less<>> contactsByLID;
  std::map<std::int64_t, GroupMemberRecord> groupMembers;  // by primary key
  std::map<std::string, std::string, std::less<>> profilePushName;
  std::map<std::string, std::string, std::less<>> lidToPhoneJID;
  std::map<std::string, std::string, std::less<>> phoneToLID;

  // Null when nobody of that JID is in the address book.
  const AddressBookContact* contact(std::string_view jid) const;
  // The name a person gave themselves, unless it is a machine's identifier.
  std::optional<std::string> pushName(std::string_view jid) const;
  std::optional<std::string> phoneJID(std::string_view lid) const;
  std::optional<std::string> lidJID(std::string_view phone) const;
  // Null when there is no such member.
  const GroupMemberRecord* groupMember(const std::optional<std::int64_t>& pk) const;

  // Records that both JIDs are one person; what is already known stays.
  void link(const std::string& lid, const std::string& phone);
  // Records the name under the JID itself, and under its other keys where they are still free.
  void addPushName(const std::string& jid, const std::string& name);

  bool operator==(const ContactDirectory&) const = default;
};
