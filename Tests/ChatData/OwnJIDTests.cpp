#include "TidewellCore/ChatData/OwnJID.h"

#include <gtest/gtest.h>

#include "Tests/Support/ProtobufWriter.h"
#include "TidewellCore/Platform/Base64.h"

namespace Fixture {
namespace {

std::optional<std::string> jidIn(const Protobuf& message) {
  return OwnJID::inPushName(Base64::encode(message.bytes()));
}

TEST(OwnJID, StandsInThePlaceOfAName) {
  const std::string jid = "15550000001@s.whatsapp.net";
  EXPECT_EQ(jidIn(Protobuf().integer(1, 1'679'774'950).text(3, jid).integer(4, 1).text(9, "x")), jid);
  EXPECT_EQ(jidIn(Protobuf().text(3, "15550000001:7@s.whatsapp.net")), jid);
}

TEST(OwnJID, IsAbsentInAnythingElse) {
  EXPECT_EQ(OwnJID::inPushName("COah/ZEGIAA="), std::nullopt) << "a time alone";
  EXPECT_EQ(OwnJID::inPushName("Ana"), std::nullopt);
  EXPECT_EQ(OwnJID::inPushName(""), std::nullopt);
  EXPECT_EQ(jidIn(Protobuf().text(3, "../x")), std::nullopt);
  EXPECT_EQ(jidIn(Protobuf().integer(3, 7)), std::nullopt);
  EXPECT_EQ(jidIn(Protobuf().text(3, "1@lid").text(9, std::string(10'000, 'x'))), std::nullopt);
  Bytes cut = Protobuf().text(3, "1@lid").bytes();
  cut.push_back(0x80);
  EXPECT_EQ(OwnJID::inPushName(Base64::encode(cut)), std::nullopt);
}

}  // namespace
}  // namespace Fixture
