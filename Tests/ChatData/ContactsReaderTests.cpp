#include "TidewellCore/ChatData/ContactsReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadDatabases.h"
#include "Tests/Support/Failures.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

using testing::IsEmpty;

constexpr const char* phone = "5511900001111@s.whatsapp.net";
constexpr const char* lid = "77001122334455@lid";

AddressBookContact only(const Contact& contact, const std::string& sql = "") {
  return readContacts({.contacts = {contact}, .contactsSQL = sql}).at(0);
}

ContactDirectory filed(std::vector<Contact> contacts) {
  return ContactsReader::directory(readContacts({.contacts = std::move(contacts)}), {});
}

TEST(ContactsReader, ReadsARowAndMakesFullJids) {
  EXPECT_EQ(only({.fullName = "Ana Souza",
                  .givenName = "Ana",
                  .businessName = "Padaria",
                  .whatsAppID = "5511900001111",
                  .lid = "77001122334455",
                  .phoneNumber = "+55 11 90000-1111"}),
            (AddressBookContact{.fullName = "Ana Souza",
                                .givenName = "Ana",
                                .businessName = "Padaria",
                                .whatsAppID = phone,
                                .lid = lid,
                                .phoneNumber = "+55 11 90000-1111"}));
}

TEST(ContactsReader, CutsNamesThatNoScreenShows) {
  const std::string name(10'001, 'a');
  const std::string family = "👨‍👩‍👧";
  std::string families;
  for (int i = 0; i < 10'000; ++i) families += family;
  EXPECT_EQ(only({.fullName = name}).fullName, name.substr(1));
  EXPECT_EQ(only({.fullName = bytesOf(name)}).fullName, name.substr(1));
  EXPECT_EQ(only({.fullName = name.substr(1)}).fullName, name.substr(1)) << "as long as a name may be";
  const std::string cut = only({.fullName = families}).fullName.value();
  EXPECT_EQ(cut.size(), 40'000 / family.size() * family.size()) << "nobody is cut out of a family";
}

TEST(ContactsReader, ReadsTheRowsOfTheLogToo) {
  WhatsAppContents app;
  for (int i = 0; i < 8; ++i) app.contacts.push_back({.fullName = "Ana"});
  EXPECT_EQ(readContacts(app).size(), 8U);
}

TEST(ContactsReader, TakesOlderColumnsWhenTheNewerAreMissing) {
  const AddressBookContact contact = only({.fullName = "Ana Souza", .givenName = "Ana", .whatsAppID = phone},
                                          "ALTER TABLE ZWAADDRESSBOOKCONTACT RENAME COLUMN ZFULLNAME TO ZDISPLAYNAME;"
                                          "ALTER TABLE ZWAADDRESSBOOKCONTACT RENAME COLUMN ZGIVENNAME TO ZFIRSTNAME;"
                                          "ALTER TABLE ZWAADDRESSBOOKCONTACT RENAME COLUMN ZWHATSAPPID TO ZJID");
  EXPECT_EQ(contact.fullName, "Ana Souza");
  EXPECT_EQ(contact.givenName, "Ana");
  EXPECT_EQ(contact.whatsAppID, phone);
}

TEST(ContactsReader, TextMayBeStoredAsBytesAndNumbersAsNumbers) {
  EXPECT_EQ(only({.fullName = bytesOf("João")}).fullName, "João");
  EXPECT_EQ(only({.fullName = Bytes{0xFF}}).fullName, std::nullopt);
  EXPECT_EQ(only({.whatsAppID = 5511900001111}).whatsAppID, phone);
}

TEST(ContactsReader, EmptyFieldsAreAbsent) {
  EXPECT_EQ(only({.fullName = "", .whatsAppID = " ", .lid = ""}), AddressBookContact{});
}

TEST(ContactsReader, TheLocalizedNumberStandsInForAMissingNumber) {
  EXPECT_EQ(only({.phoneNumber = "+1", .localizedPhoneNumber = "+2"}).phoneNumber, "+1");
  EXPECT_EQ(only({.localizedPhoneNumber = "(11) 90000-1111"}).phoneNumber, "(11) 90000-1111");
}

TEST(ContactsReader, AMissingTableGivesNobody) {
  EXPECT_THAT(readContacts({.journal = Journal::rollback, .contactsSQL = "DROP TABLE ZWAADDRESSBOOKCONTACT"}),
              IsEmpty());
}

TEST(ContactsReader, AFileThatIsNoDatabaseIsReported) {
  const TemporaryDirectory folder;
  writeFile(folder / "db", std::string(4096, 'x'));
  std::vector<AddressBookContact> contacts;
  EXPECT_THAT([&] { ContactsReader::load(folder / "db", contacts); },
              failsWith(TidewellError::invalidDatabase("file is not a database")));
}

TEST(ContactsReader, FilesContactsUnderNumberAndLidAndLinksBoth) {
  const ContactDirectory directory = filed({{.fullName = "Ana", .whatsAppID = phone, .lid = lid}});
  EXPECT_EQ(directory.contact(phone)->fullName, "Ana");
  EXPECT_EQ(directory.contact(lid)->fullName, "Ana");
  EXPECT_EQ(directory.phoneJID(lid), phone);
  EXPECT_EQ(directory.lidJID(phone), lid);
}

TEST(ContactsReader, AContactWithoutAnIdentifierIsKnownByItsInternationalNumber) {
  EXPECT_EQ(filed({{.fullName = "Ana", .phoneNumber = "+55 11 90000-1111"}}).contact(phone)->fullName, "Ana");
  EXPECT_EQ(filed({{.fullName = "Ana", .phoneNumber = "5511900001111"}}).contact(phone), nullptr)
      << "a national number could be anybody's abroad";
}

TEST(ContactsReader, OfTwoContactsWithOneNumberTheFirstWithANameCounts) {
  EXPECT_EQ(filed({{.fullName = "Ana", .whatsAppID = phone}, {.fullName = "Rui", .whatsAppID = phone}})
                .contact(phone)
                ->fullName,
            "Ana");
  EXPECT_EQ(filed({{.whatsAppID = phone}, {.fullName = "Rui", .whatsAppID = phone}}).contact(phone)->fullName, "Rui");
}

TEST(ContactsReader, MembersPushNamesAndPairsOfTheChatDatabaseAreKept) {
  const std::vector<LidPair> pairs = {{.lid = "1@lid", .phoneNumber = "4930001111"}};
  const ContactDirectory directory = readApp({.members = {{.contactName = "Member"}},
                                              .pushNames = {{.jid = phone, .name = "Pushed"}},
                                              .lidPairs = pairs,
                                              .contacts = {{.fullName = "Ana", .whatsAppID = phone}}})
                                         .directory();
  EXPECT_EQ(directory.groupMembers.at(1).contactName, "Member");
  EXPECT_EQ(directory.pushName(phone), "Pushed");
  EXPECT_EQ(directory.phoneJID("1@lid"), "4930001111@s.whatsapp.net");
  EXPECT_EQ(directory.contact(phone)->fullName, "Ana");
}

}  // namespace
}  // namespace Fixture
