#include "TidewellCore/ChatData/NameResolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TidewellCore/ChatData/DisplayNames.h"

#include "TidewellCore/ChatData/ContactsReader.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* phone = "5511900001111@s.whatsapp.net";
constexpr const char* lid = "77001122334455@lid";

ContactDirectory directoryOf(const std::vector<AddressBookContact>& contacts) {
  return ContactsReader::directory(contacts, {});
}

ContactDirectory withPushName(const std::string& jid, const std::string& name) {
  ContactDirectory directory;
  directory.addPushName(jid, name);
  return directory;
}

TEST(NameResolver, LookupKeysGoFromTheMostTellingToTheDigits) {
  EXPECT_THAT(NameResolver::lookupKeys(" +55 11-Ab@S.WhatsApp.net\n"),
              ElementsAre("+55 11-Ab@S.WhatsApp.net", "+55 11-ab@s.whatsapp.net", "+55 11-Ab", "+55 11-ab", "5511"));
  EXPECT_THAT(NameResolver::lookupKeys(phone), ElementsAre(phone, "5511900001111"));
  EXPECT_THAT(NameResolver::lookupKeys("ana"), ElementsAre("ana"));
  EXPECT_THAT(NameResolver::lookupKeys("@lid"), ElementsAre("@lid"));
  EXPECT_THAT(NameResolver::lookupKeys(" \n "), IsEmpty());
}

TEST(NameResolver, KeepsTheDigitsOfATextInOrder) {
  EXPECT_EQ(NameResolver::digitsOnly("+55 (11) 90000-1111"), "5511900001111");
  EXPECT_EQ(NameResolver::digitsOnly("ana"), "");
}

TEST(NameResolver, MakesJidsOfNumbersAndLeavesJidsAlone) {
  EXPECT_EQ(NameResolver::whatsAppJID(" +55 11 90000-1111 "), phone);
  EXPECT_EQ(NameResolver::whatsAppJID(" 1-2@g.us "), "1-2@g.us");
  EXPECT_EQ(NameResolver::whatsAppJID(" ana "), "ana");
  EXPECT_EQ(NameResolver::whatsAppJID(" "), "");
  EXPECT_EQ(NameResolver::lidJID(" 77001122334455 "), lid);
  EXPECT_EQ(NameResolver::lidJID(lid), lid);
}

TEST(NameResolver, FormatsNumbersOfBrazilNorthAmericaAndElsewhere) {
  EXPECT_EQ(NameResolver::formatPhoneDigits("5511900001111"), "+55 11 90000-1111");
  EXPECT_EQ(NameResolver::formatPhoneDigits("551130001111"), "+55 11 3000-1111");
  EXPECT_EQ(NameResolver::formatPhoneDigits("15550001111"), "+1 (555) 000-1111");
  EXPECT_EQ(NameResolver::formatPhoneDigits("4930001111"), "+4930001111");
  EXPECT_EQ(NameResolver::formatPhoneDigits("55119000011112"), "+55119000011112") << "too long for Brazil";
  EXPECT_EQ(NameResolver::formatPhoneDigits("55113000111"), "+55113000111") << "too short for Brazil";
  EXPECT_EQ(NameResolver::formatPhoneDigits("1555000111"), "+1555000111");
}

TEST(NameResolver, OnlyPeoplesJidsOfEightDigitsAndMoreAreNumbers) {
  EXPECT_EQ(NameResolver::formattedPhone(phone), "+55 11 90000-1111");
  EXPECT_EQ(NameResolver::formattedPhone("+49 30 001-111"), "+4930001111");
  EXPECT_EQ(NameResolver::formattedPhone("12345678@s.whatsapp.net"), "+12345678");
  EXPECT_EQ(NameResolver::formattedPhone("1234567@s.whatsapp.net"), std::nullopt);
  EXPECT_EQ(NameResolver::formattedPhone("5511900001111-1400000000@g.us"), std::nullopt);
  EXPECT_EQ(NameResolver::formattedPhone(" 5511900001111-1400000000@G.US "), std::nullopt);
  EXPECT_EQ(NameResolver::formattedPhone(lid), std::nullopt);
  EXPECT_EQ(NameResolver::formattedPhone("77001122334455@LID"), std::nullopt);
  EXPECT_EQ(NameResolver::formattedPhone("status@broadcast"), std::nullopt);
}

TEST(NameResolver, NamesThatShowNothingArePlaceholders) {
  for (const char* name : {"", " ", "\n\t", "\u00A0", "\u200E", "\u200F \u202A\u202C", "\u2066\u2069", "\u200B",
                           "\uFEFF", "\u2060", "\u3000"}) {
    EXPECT_TRUE(NameResolver::isPlaceholderPartnerName(name)) << testing::PrintToString(name);
  }
  for (const char* name : {"A", "\u200EAna", ".", "0", "👋", "\u200E+55 11"}) {
    EXPECT_FALSE(NameResolver::isPlaceholderPartnerName(name)) << name;
  }
}

TEST(NameResolver, AChatIsCalledByTheFirstRuleThatGivesAName) {
  const ContactDirectory contact = directoryOf({{.fullName = "Ana Souza", .whatsAppID = phone}});
  EXPECT_EQ(DisplayNames::chatTitle(" Ana ", phone, contact), "Ana");
  EXPECT_EQ(DisplayNames::chatTitle("\u200E ", phone, contact), "Ana Souza");
  EXPECT_EQ(DisplayNames::chatTitle("", phone, withPushName(phone, "Pushed")), "+55 11 90000-1111");
  EXPECT_EQ(DisplayNames::chatTitle("", lid, withPushName(lid, "Pushed")), "Pushed");
  EXPECT_EQ(DisplayNames::chatTitle("\u200E", lid, {}), "\u200E");
  EXPECT_EQ(DisplayNames::chatTitle("", " 1-2@g.us ", {}), "1-2@g.us");
  EXPECT_EQ(DisplayNames::chatTitle("", "status@broadcast", {}), "status@broadcast");
}

TEST(NameResolver, AnImplausibleContactNameIsPassedOver) {
  const ContactDirectory contact = directoryOf({{.fullName = "CgtKb2huIFNtaXRoEgA=", .whatsAppID = phone}});
  EXPECT_EQ(DisplayNames::chatTitle("", phone, contact), "+55 11 90000-1111");
}

TEST(NameResolver, ABusinessNameIsShownForAChatWithoutAName) {
  const ContactDirectory contact = directoryOf({{.businessName = " Padaria ", .whatsAppID = phone}});
  EXPECT_EQ(DisplayNames::chatTitle("", phone, contact), "Padaria");
}

TEST(AddressBookContact, IsCalledByItsFullNameThenItsBusinessThenItsGivenName) {
  EXPECT_EQ((AddressBookContact{.fullName = " A ", .givenName = "G", .businessName = "B"}).bestName(), "A");
  EXPECT_EQ((AddressBookContact{.fullName = " ", .givenName = "G", .businessName = "B"}).bestName(), "B");
  EXPECT_EQ((AddressBookContact{.givenName = " G\n"}).bestName(), "G");
  EXPECT_EQ(AddressBookContact{}.bestName(), std::nullopt);
}

TEST(ContactDirectory, FindsAContactHoweverItsJidIsWritten) {
  const ContactDirectory directory = directoryOf({{.fullName = "Ana", .whatsAppID = "5511900001111@s.whatsapp.net"}});
  for (const char* jid : {"5511900001111@s.whatsapp.net", "5511900001111@S.WHATSAPP.NET", " 5511900001111 ",
                          "+55 11 90000-1111", "+55 (11) 90000.1111@s.whatsapp.net"}) {
    ASSERT_NE(directory.contact(jid), nullptr) << jid;
    EXPECT_EQ(directory.contact(jid)->fullName, "Ana") << jid;
  }
  EXPECT_EQ(directory.contact("5511900001112"), nullptr);
  EXPECT_EQ(directory.contact(""), nullptr);
}

TEST(ContactDirectory, FindsALidByItselfAndByTheNumberItIsLinkedTo) {
  ContactDirectory directory =
      directoryOf({{.fullName = "By LID", .lid = "1@lid"}, {.fullName = "By number", .whatsAppID = phone}});
  directory.link("2@lid", phone);
  EXPECT_EQ(directory.contact("1@LID")->fullName, "By LID");
  EXPECT_EQ(directory.contact("2@lid")->fullName, "By number");
  EXPECT_EQ(directory.contact("3@lid"), nullptr);
  EXPECT_EQ(directory.contact("1@s.whatsapp.net"), nullptr) << "a LID's digits are no number";
}

TEST(ContactDirectory, APushNameThatIsAnIdentifierIsNone) {
  EXPECT_EQ(withPushName(phone, "CgtKb2huIFNtaXRoEgA=").pushName(phone), std::nullopt);
  EXPECT_EQ(withPushName(phone, "Ana").pushName("+55 11 90000-1111"), "Ana");
}

TEST(ContactDirectory, TheLastNameOfAJidCountsAndTheFirstOfAnAlias) {
  ContactDirectory directory;
  directory.addPushName("55@s", "First");
  directory.addPushName("55@t", "Second");
  directory.addPushName("55@t", "Third");
  EXPECT_EQ(directory.pushName("55@s"), "First");
  EXPECT_EQ(directory.pushName("55@t"), "Third");
  EXPECT_EQ(directory.pushName("55"), "First");
}

TEST(ContactDirectory, LinksBothWaysAndKeepsWhatItKnows) {
  ContactDirectory directory;
  directory.link(lid, phone);
  directory.link(lid, "1@s.whatsapp.net");
  EXPECT_EQ(directory.phoneJID("77001122334455"), phone);
  EXPECT_EQ(directory.phoneJID("77001122334455@LID"), phone);
  EXPECT_EQ(directory.lidJID("+55 11 90000-1111"), lid);
  EXPECT_EQ(directory.phoneJID("1@lid"), std::nullopt);
}

}  // namespace
