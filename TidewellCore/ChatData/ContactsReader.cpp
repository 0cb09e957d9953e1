#include "TidewellCore/ChatData/ContactsReader.h"

#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

using ContactTable = std::map<std::string, AddressBookContact, std::less<>>;

// Text, numbers as text, and bytes that are text; nothing for what shows nothing.
std::optional<std::string> field(const SQLiteRowView& row, TableReader::Column column) {
  const bool isBlob = row.type(column.place) == SQLiteRowView::Type::blob;
  const auto text = isBlob ? textOrUTF8(row, column) : row.text(column.place);
  if (!text) return std::nullopt;
  return NameResolver::trimmedNonEmpty(NameResolver::cut(std::string(*text)));
}

// Of two contacts with one key the first stays, unless it has no name.
void file(ContactTable& table, const std::string& jid, const AddressBookContact& contact) {
  for (const std::string& key : NameResolver::lookupKeys(jid)) {
    const auto [entry, isNew] = table.try_emplace(key, contact);
    if (!isNew && !entry->second.bestName()) entry->second = contact;
  }
}

// A contact without a WhatsApp identifier is known by its number, if that begins with the country code.
std::optional<std::string> phoneJID(const AddressBookContact& contact) {
  if (contact.whatsAppID || !contact.phoneNumber || !contact.phoneNumber->starts_with('+')) return contact.whatsAppID;
  return NameResolver::whatsAppJID(*contact.phoneNumber);
}

}  // namespace

bool ContactsReader::load(const std::filesystem::path& copiedDatabase, std::vector<AddressBookContact>& contacts) {
  const SQLiteDB database(PathText::text(copiedDatabase), SQLiteDB::OpenMode::writableCopy);
  TableReader table(database, "ZWAADDRESSBOOKCONTACT");
  const TableReader::Column fullName = table.select({"ZFULLNAME", "ZDISPLAYNAME"});
  const TableReader::Column givenName = table.select({"ZGIVENNAME", "ZFIRSTNAME"});
  const TableReader::Column businessName = table.select({"ZBUSINESSNAME"});
  const TableReader::Column whatsAppID = table.select({"ZWHATSAPPID", "ZCONTACTJID", "ZJID"});
  const TableReader::Column lid = table.select({"ZLID"});
  const TableReader::Column phoneNumber = table.select({"ZPHONENUMBER"});
  const TableReader::Column localizedNumber = table.select({"ZLOCALIZEDPHONENUMBER"});
  table.forEachRow([&](const SQLiteRowView& row) {
    AddressBookContact contact{.fullName = field(row, fullName),
                               .givenName = field(row, givenName),
                               .businessName = field(row, businessName),
                               .phoneNumber = field(row, phoneNumber)};
    if (const auto identifier = field(row, whatsAppID)) contact.whatsAppID = NameResolver::whatsAppJID(*identifier);
    if (const auto identifier = field(row, lid)) contact.lid = NameResolver::lidJID(*identifier);
    if (!contact.phoneNumber) contact.phoneNumber = field(row, localizedNumber);
    contacts.push_back(std::move(contact));
  });
  return areThere({fullName, whatsAppID});
}

ContactDirectory ContactsReader::directory(const std::vector<AddressBookContact>& contacts, ContactDirectory base) {
  for (const AddressBookContact& contact : contacts) {
    const auto phone = phoneJID(contact);
    if (phone) file(base.contactsByWhatsAppID, *phone, contact);
    if (contact.lid) file(base.contactsByLID, *contact.lid, contact);
    if (phone && contact.lid) base.link(*contact.lid, *phone);
  }
  return base;
}
