#include "TidewellCore/ChatData/StoredJID.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace std::string_view_literals;

TEST(StoredJID, IsTakenAsItIs) {
  for (const char* jid : {"15550000002@s.whatsapp.net", "77001122334455@lid", "1555-1600@g.us", "120363@newsletter",
                          "status@broadcast", "0@s.whatsapp.net", "1_2.3@lid.status"}) {
    EXPECT_EQ(StoredJID::checked(jid), jid);
  }
}

TEST(StoredJID, LosesItsDevice) {
  EXPECT_EQ(StoredJID::checked("15550000002:12@s.whatsapp.net"), "15550000002@s.whatsapp.net");
  EXPECT_EQ(StoredJID::checked("15550000002:12@S.WhatsApp.net"), "15550000002@s.whatsapp.net");
}

TEST(StoredJID, WhatIsNoneIsAbsent) {
  const std::string longest = std::string(251, '1') + "@lid";
  EXPECT_EQ(StoredJID::checked(longest), longest);
  for (const std::string_view text :
       {""sv,       "15550000002"sv, "@lid"sv,   "1@"sv,      "1@2@lid"sv,   "a/b@lid"sv, "..@lid"sv,
        ".a@lid"sv, "1@../x"sv,      "1@.."sv,   "1\0@lid"sv, "1@lid\n"sv,   "<b>@lid"sv, "Zoë@lid"sv,
        " 1@lid"sv, "1:@lid"sv,      ":1@lid"sv, "1:a@lid"sv, "1:2:3@lid"sv, "1@lid:2"sv, "COah/ZEGIAA="sv}) {
    EXPECT_EQ(StoredJID::checked(text), std::nullopt) << text;
  }
  EXPECT_EQ(StoredJID::checked("1" + longest), std::nullopt);
  EXPECT_EQ(StoredJID::checked(std::string(1'000'000, '1') + "@lid"), std::nullopt);
}

TEST(StoredJID, TheOwnerIsKnownByEachOwnJid) {
  const std::array<std::string, 2> own = {"15550000001@s.whatsapp.net", "9900@lid"};
  EXPECT_EQ(StoredJID::person("15550000001:3@s.whatsapp.net", own), Person{.isOwner = true});
  EXPECT_EQ(StoredJID::person("9900@lid", own), Person{.isOwner = true});
  EXPECT_EQ(StoredJID::person("9901@lid", own), (Person{.jid = "9901@lid"}));
  EXPECT_EQ(StoredJID::person("9900@lid", {}), (Person{.jid = "9900@lid"}));
  EXPECT_EQ(StoredJID::person("nobody", own), std::nullopt);
}

}  // namespace
