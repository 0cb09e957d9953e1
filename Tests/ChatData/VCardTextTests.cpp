#include "TidewellCore/ChatData/VCardText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<SharedContact> contacts(std::optional<std::string_view> names, std::optional<std::string_view> cards) {
  return VCardText::contacts(names, cards).contacts;
}

SharedContact only(std::string_view card) {
  const auto found = contacts(std::nullopt, card);
  return found.size() == 1 ? found[0] : SharedContact{.name = "not one contact"};
}

// A card of these properties.
std::string card(std::string_view properties) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + std::string(properties) + "\r\nEND:VCARD\r\n";
}

std::string nameOf(std::string_view properties) { return only(card(properties)).name; }

TEST(VCardText, ReadsNameNumbersAndAddresses) {
  EXPECT_EQ(
      only(card("N:Silva;Carla;;;\r\nFN:Carla Silva\r\n"
                "item1.TEL;type=CELL;type=VOICE;waid=15550000009:+1 555 000 0009\r\nitem1.X-ABLabel:Mobile\r\n"
                "tel;type=HOME:+1 555 000 0010\r\nEMAIL;type=INTERNET:carla@example.org")),
      (SharedContact{
          .name = "Carla Silva", .phones = {"+1 555 000 0009", "+1 555 000 0010"}, .emails = {"carla@example.org"}}));
}

TEST(VCardText, LinesEndInEveryWay) {
  const SharedContact ana{.name = "Ana", .phones = {"1"}};
  EXPECT_EQ(only("BEGIN:VCARD\nFN:Ana\nTEL:1\nEND:VCARD"), ana);
  EXPECT_EQ(only("BEGIN:VCARD\rFN:Ana\rTEL:1\rEND:VCARD"), ana);
  EXPECT_EQ(only("FN:Ana\n\n\r\nTEL:1"), ana);
}

TEST(VCardText, ANumberMayStandInAParameterAlone) {
  EXPECT_THAT(only(card("FN:A\r\nTEL;waid=15550000009:")).phones, ElementsAre("+15550000009"));
  EXPECT_THAT(only(card("FN:A\r\nTEL;WAID=<b>:")).phones, IsEmpty());
  EXPECT_THAT(only(card("FN:A\r\nTEL;VALUE=uri:tel:+1-555")).phones, ElementsAre("+1-555"));
  EXPECT_THAT(only(card("FN:A\r\nTEL:1\r\nTEL:1\r\nTEL: 2 ")).phones, ElementsAre("1", "2"));
}

TEST(VCardText, TheFullNameStandsBeforeItsPartsAndTheCompany) {
  EXPECT_EQ(nameOf("ORG:Bakery;Shop\r\nN:Silva;Carla;Maria;Dr.;Jr.\r\nFN:Carla S."), "Carla S.");
  EXPECT_EQ(nameOf("ORG:Bakery;Shop\r\nN:Silva;Carla;Maria;Dr.;Jr.\r\nFN: "), "Dr. Carla Maria Silva Jr.");
  EXPECT_EQ(nameOf("N:Silva"), "Silva");
  EXPECT_EQ(nameOf("ORG:Bakery;Shop\r\nN:;;;;"), "Bakery");
  EXPECT_EQ(contacts("Carla", card("TEL:1"))[0].name, "Carla");
  EXPECT_EQ(contacts("Carla", card("FN:Carla Silva"))[0].name, "Carla Silva");
  EXPECT_EQ(only(card("TEL:1")), (SharedContact{.phones = {"1"}})) << "a number without a name";
}

TEST(VCardText, FoldedLinesAreOne) {
  EXPECT_EQ(nameOf("FN:Carla\r\n  Maria\r\n\t Silva"), "Carla Maria Silva");
  EXPECT_EQ(nameOf("FN;CHARSET=UTF-8;\r\n X=1\r\n ;Y=2:Car\r\n la"), "Carla") << "also within the head";
  EXPECT_THAT(only(card("FN:A\r\nTEL;type=CELL;\r\n waid=15550000009:+1 555 000 0009")).phones,
              ElementsAre("+1 555 000 0009"));
  EXPECT_EQ(only("PHOTO;ENCODING=b:AAAA\r\n FN:no name\r\nFN:Ana").name, "Ana");
}

TEST(VCardText, EscapesAreUndone) {
  EXPECT_EQ(nameOf(R"(FN:Silva\, Carla\; a\\b)"), R"(Silva, Carla; a\b)");
  EXPECT_EQ(nameOf(R"(FN:Carla\nSilva)"), "Carla Silva");
  EXPECT_EQ(nameOf(R"(N:Sil\;va;Carla)"), "Carla Sil;va");
  EXPECT_EQ(nameOf("FN:Carla; Silva"), "Carla; Silva");
  EXPECT_EQ(nameOf("FN:Carla\\"), "Carla\\");
}

TEST(VCardText, OldCardsAreQuotedPrintable) {
  EXPECT_EQ(nameOf("FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Zo=C3=AB"), "Zoë");
  EXPECT_EQ(nameOf("FN;QUOTED-PRINTABLE:Zo=c3=ab"), "Zoë");
  EXPECT_EQ(nameOf("FN;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:Zo=EB"), "Zoë");
  EXPECT_EQ(nameOf("FN;charset=windows-1252;encoding=quoted-printable:Zo=EB"), "Zoë");
  EXPECT_EQ(nameOf("FN;ENCODING=QUOTED-PRINTABLE:Zo=EB"), "Zo\uFFFD");
  EXPECT_EQ(nameOf("FN;CHARSET=KOI8-R;ENCODING=QUOTED-PRINTABLE:=C1"), "\uFFFD");
  EXPECT_EQ(nameOf("FN;ENCODING=QUOTED-PRINTABLE:Car=\r\nla =\r\nSilva"), "Carla Silva");
  EXPECT_EQ(nameOf("NOTE;ENCODING=QUOTED-PRINTABLE:a=\r\nFN:no name\r\nFN:Ana"), "Ana");
  EXPECT_EQ(nameOf("FN:1=3D2"), "1=3D2") << "only where it says so";
}

TEST(VCardText, AnEscapeThatIsCutStaysAsItIs) {
  EXPECT_EQ(only("FN;ENCODING=QUOTED-PRINTABLE:Zo=C3=A").name, "Zo\uFFFD=A");
  EXPECT_EQ(only("FN;ENCODING=QUOTED-PRINTABLE:Zo=").name, "Zo");
  EXPECT_EQ(only("FN;ENCODING=QUOTED-PRINTABLE:Zo=ZZ").name, "Zo=ZZ");
}

TEST(VCardText, ParametersMayBeQuoted) {
  EXPECT_THAT(only(card("FN:A\r\nTEL;TYPE=\"home:1;x\";waid=5:")).phones, ElementsAre("+5"));
  EXPECT_EQ(nameOf("FN;X=\"open:Ana\r\nTEL:1"), "") << "a head without an end";
}

constexpr const char* twoCards = "FN:Carla_$!<VCard-Separator>!$_FN:Ben\nTEL:2";

TEST(VCardText, SeveralCardsHaveACountBeforeTheirNames) {
  const std::vector<SharedContact> two = {{.name = "Carla"}, {.name = "Ben", .phones = {"2"}}};
  EXPECT_EQ(contacts("2 contacts_$!<Name-Separator>!$_Carla_$!<Name-Separator>!$_Ben", twoCards), two);
  EXPECT_EQ(contacts(std::nullopt, twoCards), two);
  EXPECT_EQ(
      contacts("2 contacts_$!<Name-Separator>!$_Carla_$!<Name-Separator>!$_Ben", "TEL:1_$!<VCard-Separator>!$_TEL:2"),
      (std::vector<SharedContact>{{.name = "Carla", .phones = {"1"}}, {.name = "Ben", .phones = {"2"}}}));
}

TEST(VCardText, NamesWithoutCardsAreContactsToo) {
  EXPECT_EQ(contacts("Carla", std::nullopt), (std::vector<SharedContact>{{.name = "Carla"}}));
  EXPECT_EQ(contacts("3_$!<Name-Separator>!$_Carla_$!<Name-Separator>!$_Ben_$!<Name-Separator>!$_Ana", "FN:C"),
            (std::vector<SharedContact>{{.name = "C"}, {.name = "Ben"}, {.name = "Ana"}}));
}

TEST(VCardText, WhatSaysNothingIsNobody) {
  EXPECT_THAT(contacts(std::nullopt, std::nullopt), IsEmpty());
  EXPECT_THAT(contacts("", ""), IsEmpty());
  EXPECT_THAT(contacts(" ", "no card at all"), IsEmpty());
  std::string separators;
  for (int i = 0; i < 100'000; ++i) separators += VCardText::cardSeparator;
  EXPECT_THAT(contacts(std::nullopt, separators), IsEmpty());
  EXPECT_THAT(contacts("_$!<Name-Separator>!$_", "_$!<VCard-Separator>!$_"), IsEmpty());
}

TEST(VCardText, HugeCardsAreCut) {
  const std::string photo = "FN:Ana\r\nPHOTO:" + std::string(10'000'000, 'A') + "\r\nTEL:1";
  EXPECT_EQ(only(photo), (SharedContact{.name = "Ana", .phones = {"1"}}));
  EXPECT_EQ(nameOf("FN:" + std::string(10'000'000, 'A')), std::string(1'000, 'A'));
  std::string folds = "FN:Ana\nX";
  for (int i = 0; i < 1'000'000; ++i) folds += "\n a";
  EXPECT_EQ(only(folds + "\nTEL:1"), (SharedContact{.name = "Ana", .phones = {"1"}})) << "a head without an end";
  std::string numbers = "FN:Ana\n";
  for (int i = 0; i < 5'000; ++i) numbers += "TEL:" + std::to_string(i) + "\n";
  EXPECT_EQ(only(numbers).phones.size(), 100U);
  std::string people;
  for (int i = 0; i < 5'000; ++i) people += "FN:a" + std::string(VCardText::cardSeparator);
  EXPECT_EQ(contacts(std::nullopt, people).size(), 1'000U);
}

}  // namespace
