#include "TidewellCore/ChatData/JID.h"

#include <gtest/gtest.h>

namespace {

TEST(JID, ServersAreComparedWithoutLetterCase) {
  EXPECT_TRUE(JID::isGroup("1-2@g.us"));
  EXPECT_TRUE(JID::isGroup("1-2@G.US"));
  EXPECT_TRUE(JID::isLID("77@lid"));
  EXPECT_TRUE(JID::isLID("77@Lid"));
  EXPECT_TRUE(JID::hasServer("55@S.WhatsApp.net", UserJIDSuffix));
}

TEST(JID, TheServerIsAllThatFollowsTheFirstAt) {
  EXPECT_FALSE(JID::isGroup("1-2@x@g.us"));
  EXPECT_FALSE(JID::isGroup("1-2@g.us.example"));
  EXPECT_FALSE(JID::isGroup("g.us"));
  EXPECT_FALSE(JID::isLID("lid"));
  EXPECT_FALSE(JID::isLID(""));
  EXPECT_TRUE(JID::isLID("@lid"));
}

TEST(JID, OtherServersAreNeitherGroupsNorLids) {
  for (const char* jid : {"55@s.whatsapp.net", "status@broadcast", "1@newsletter", "0@status"}) {
    EXPECT_FALSE(JID::isGroup(jid)) << jid;
    EXPECT_FALSE(JID::isLID(jid)) << jid;
  }
}

TEST(JID, TheUserPartEndsBeforeTheFirstAt) {
  EXPECT_EQ(JID::userPart("55@s.whatsapp.net"), "55");
  EXPECT_EQ(JID::userPart("55@a@b"), "55");
  EXPECT_EQ(JID::userPart("55"), "55");
  EXPECT_EQ(JID::userPart("@lid"), "");
}

}  // namespace
