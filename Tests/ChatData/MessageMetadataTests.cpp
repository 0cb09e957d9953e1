#include "TidewellCore/ChatData/MessageMetadata.h"

#include <gtest/gtest.h>

#include <array>

#include "Tests/Support/PlistWriter.h"
#include "Tests/Support/ProtobufWriter.h"

namespace Fixture {
namespace {

const std::array<std::string, 1> own = {"15550000001@s.whatsapp.net"};
constexpr const char* ana = "15550000002@s.whatsapp.net";

std::optional<MessageMetadata> read(const Protobuf& message) { return MessageMetadata::read(message.bytes(), own); }

Quote quoteOf(const Protobuf& copy) {
  const auto metadata = read(Protobuf().text(5, "3A").message(19, copy));
  return metadata.value().quote.value();
}

TEST(MessageMetadata, TellsWhatIsAnswered) {
  EXPECT_EQ(
      read(Protobuf().text(5, "3A0F").text(6, ana).message(19, Protobuf().text(1, "Makes sense"))),
      (MessageMetadata{.quote = Quote{.stanzaID = "3A0F", .sender = Person{.jid = ana}, .words = "Makes sense"}}));
  EXPECT_EQ(read(Protobuf().text(5, "3A0F").text(6, own[0]).text(7, "status@broadcast")),
            (MessageMetadata{.quote = Quote{.stanzaID = "3A0F", .sender = Person{.isOwner = true}}}));
}

TEST(MessageMetadata, AReplyNeedsAnOriginal) {
  EXPECT_EQ(read(Protobuf().text(5, "").text(6, ana)), MessageMetadata{});
  EXPECT_EQ(read(Protobuf().message(19, Protobuf().text(1, "a"))).value().quote, (Quote{.words = "a"}));
  EXPECT_EQ(read(Protobuf().integer(5, 7).text(19, "")), MessageMetadata{});
}

TEST(MessageMetadata, JidsThatAreNoneAreAbsent) {
  EXPECT_EQ(read(Protobuf().text(5, "3A").text(6, "../x").text(7, "a/b@g.us")).value().quote,
            (Quote{.stanzaID = "3A"}));
}

TEST(MessageMetadata, TheCopyOfTheOriginalSaysWhatItWas) {
  struct Case {
    Protobuf copy;
    MessagePart part;
    std::optional<std::string> words;
  };
  const std::vector<Case> cases = {
      {Protobuf().text(1, "words"), MessagePart::text, "words"},
      {Protobuf().message(3, Protobuf().text(3, "caption").text(16, "jpeg")), MessagePart::photo, "caption"},
      {Protobuf().message(3, Protobuf()), MessagePart::photo, std::nullopt},
      {Protobuf().message(4, Protobuf().text(1, "Carla").text(16, "BEGIN:VCARD")), MessagePart::contact, "Carla"},
      {Protobuf().message(5, Protobuf().real(1, 35).real(2, -78).text(4, "12 Main St").text(3, "Blue Cafe")),
       MessagePart::location, "Blue Cafe"},
      {Protobuf().message(5, Protobuf().text(4, "12 Main St")), MessagePart::location, "12 Main St"},
      {Protobuf().message(6, Protobuf().text(1, "https://a.example").text(2, "a").text(6, "t")), MessagePart::text,
       "https://a.example"},
      {Protobuf().message(7, Protobuf().text(3, "title").text(8, "report.pdf")), MessagePart::document, "report.pdf"},
      {Protobuf().message(7, Protobuf().text(20, "read it").text(8, "report.pdf")), MessagePart::document, "read it"},
      {Protobuf().message(8, Protobuf().integer(5, 7).integer(6, 1)), MessagePart::voiceMessage, std::nullopt},
      {Protobuf().message(8, Protobuf().integer(5, 7).integer(6, 0)), MessagePart::audio, std::nullopt},
      {Protobuf().message(9, Protobuf().integer(5, 7).text(7, "look")), MessagePart::video, "look"},
      {Protobuf().message(9, Protobuf().integer(8, 1)), MessagePart::gif, std::nullopt},
      {Protobuf().message(13, Protobuf()), MessagePart::contacts, std::nullopt},
      {Protobuf().message(18, Protobuf()), MessagePart::liveLocation, std::nullopt},
      {Protobuf().message(26, Protobuf()), MessagePart::sticker, std::nullopt},
      {Protobuf().message(28, Protobuf().text(2, "secret")), MessagePart::invite, std::nullopt},
      {Protobuf().message(30, Protobuf()), MessagePart::product, std::nullopt},
      {Protobuf().message(49, Protobuf().text(2, "Which day?")), MessagePart::poll, "Which day?"},
      {Protobuf().message(60, Protobuf().text(2, "Which day?")), MessagePart::poll, "Which day?"},
      {Protobuf().message(64, Protobuf().text(2, "Which day?")), MessagePart::poll, "Which day?"},
      {Protobuf().message(66, Protobuf()), MessagePart::videoNote, std::nullopt},
      {Protobuf().message(999, Protobuf().text(1, "unknown")), MessagePart::text, std::nullopt},
  };
  for (const Case& each : cases) {
    const Quote quote = quoteOf(each.copy);
    EXPECT_EQ(quote.part, each.part) << testing::PrintToString(each.copy.bytes());
    EXPECT_EQ(quote.words, each.words) << testing::PrintToString(each.copy.bytes());
  }
}

TEST(MessageMetadata, WordsOfTheOriginalAreCut) {
  EXPECT_EQ(quoteOf(Protobuf().text(1, std::string(1'001, 'a'))).words, std::string(1'000, 'a'));
  EXPECT_EQ(quoteOf(Protobuf().text(1, " \n ")).words, std::nullopt);
}

TEST(MessageMetadata, AMessageMayBeForwarded) {
  EXPECT_TRUE(read(Protobuf().integer(17, 1)).value().isForwarded);
  EXPECT_FALSE(read(Protobuf().integer(17, 0)).value().isForwarded);
  EXPECT_FALSE(read(Protobuf().integer(17, -1)).value().isForwarded);
  EXPECT_FALSE(read(Protobuf().text(17, "1")).value().isForwarded);
}

TEST(MessageMetadata, ATemplateHasParagraphsAndButtons) {
  const Protobuf buttons =
      Protobuf()
          .message(8, Protobuf().message(1, Protobuf().text(1, "Yes")))
          .message(8, Protobuf().message(2, Protobuf().text(1, "Track").text(2, "https://a.example/1")))
          .message(8, Protobuf().message(3, Protobuf().text(1, "Call").text(2, "+1 555 000 0009")))
          .message(8, Protobuf().message(2, Protobuf().text(2, "https://nameless.example")));
  const Protobuf words = Protobuf().text(7, "Thank you").text(6, "It is on its way.").text(2, "Your order");
  Protobuf text;
  text.message(24, Protobuf().message(1, Protobuf(words)));
  EXPECT_EQ(read(text).value().business,
            (BusinessText{.paragraphs = {"Your order", "It is on its way.", "Thank you"}, .buttons = {}}));
  text = Protobuf().message(24, Protobuf().message(1, buttons));
  EXPECT_EQ(read(text).value().business.buttons,
            (std::vector<BusinessButton>{{.words = "Yes"},
                                         {.words = "Track", .target = "https://a.example/1"},
                                         {.words = "Call", .target = "+1 555 000 0009"}}));
}

TEST(MessageMetadata, WordsMayHaveButtonsOrAListBelowThem) {
  const Protobuf button = Protobuf().text(1, "b1").message(2, Protobuf().text(1, "Open"));
  EXPECT_EQ(read(Protobuf().message(
                     51, Protobuf().message(1, Protobuf().text(6, "Hours?").text(7, "Shop").message(9, button))))
                .value()
                .business,
            (BusinessText{.paragraphs = {"Hours?", "Shop"}, .buttons = {{.words = "Open"}}}));
  const Protobuf section =
      Protobuf().text(1, "Fruit").message(2, Protobuf().text(1, "Apple")).message(2, Protobuf().text(1, "Pear"));
  EXPECT_EQ(
      read(Protobuf().message(
               43,
               Protobuf().message(1, Protobuf().text(1, "Menu").text(2, "Choose").text(7, "Shop").message(5, section))))
          .value()
          .business,
      (BusinessText{.paragraphs = {"Menu", "Choose", "Shop"}, .buttons = {{.words = "Apple"}, {.words = "Pear"}}}));
}

std::optional<Product> productOf(const Protobuf& snapshot) {
  return read(Protobuf().message(26, Protobuf().message(1, Protobuf().message(1, snapshot).text(2, ana))))
      .value()
      .product;
}

TEST(MessageMetadata, AProductHasAPriceInItsCurrency) {
  EXPECT_EQ(productOf(Protobuf().text(3, "A lamp").text(4, "Bright").text(5, "EUR").integer(6, 19'990)),
            (Product{.title = "A lamp", .description = "Bright", .currency = "EUR", .thousandths = 19'990}));
  EXPECT_EQ(productOf(Protobuf().text(3, "A lamp").integer(6, 19'990)), (Product{.title = "A lamp"}));
  EXPECT_EQ(productOf(Protobuf().text(3, "A lamp").text(5, "EUR").integer(6, -1)),
            (Product{.title = "A lamp", .currency = "EUR"}));
  EXPECT_EQ(productOf(Protobuf().text(3, "A lamp").text(5, "<b>").integer(6, INT64_MAX)), (Product{.title = "A lamp"}));
  EXPECT_EQ(productOf(Protobuf().text(5, "EUR")), std::nullopt);
}

TEST(MessageMetadata, AnInvitationKeepsNoKeyToTheGroup) {
  EXPECT_EQ(read(Protobuf().message(28, Protobuf()
                                            .text(1, "1-2@g.us")
                                            .text(2, "secret")
                                            .integer(3, 1'700'000'000)
                                            .text(4, "Garden")
                                            .text(6, "Join us")))
                .value(),
            (MessageMetadata{.invite = GroupInvite{.groupName = "Garden", .caption = "Join us"}}));
  EXPECT_EQ(read(Protobuf().text(28, "")).value().invite, GroupInvite{});
}

TEST(MessageMetadata, LengthsOfTimeArePlausible) {
  const auto timer = [](std::int64_t seconds) { return read(Protobuf().integer(36, seconds)).value().timerSeconds; };
  EXPECT_EQ(timer(604'800), 604'800);
  EXPECT_EQ(timer(0), 0);
  EXPECT_EQ(timer(-1), std::nullopt);
  EXPECT_EQ(timer(INT64_MIN), std::nullopt);
  EXPECT_EQ(timer(INT64_MAX), std::nullopt);
  const auto call = [](const Protobuf& message) {
    return read(Protobuf().message(87, Protobuf().message(1, message))).value().callSeconds;
  };
  EXPECT_EQ(call(Protobuf().integer(3, 95)), 95);
  EXPECT_EQ(call(Protobuf().integer(3, -95)), std::nullopt);
  EXPECT_EQ(call(Protobuf()), std::nullopt);
}

TEST(MessageMetadata, AddressesAndDescriptionsOfLinksAreThere) {
  EXPECT_EQ(read(Protobuf()
                     .text(3, "About it")
                     .message(42, Protobuf().message(1, Protobuf().text(9, "https://shop.example/")))),
            (MessageMetadata{.sourceURL = "https://shop.example/", .linkDescription = "About it"}));
}

TEST(MessageMetadata, WhatIsNotKnownIsPassedOver) {
  EXPECT_EQ(read(Protobuf().integer(216, 1)), MessageMetadata{}) << "c0 0d 01, as notices have it";
  EXPECT_EQ(read(Protobuf().text(4, "/v/t62").integer(13, 1).text(105, "x")), MessageMetadata{});
  EXPECT_EQ(MessageMetadata::read({}, own), MessageMetadata{});
}

TEST(MessageMetadata, AnErrorAnywhereMakesAllAbsent) {
  const Protobuf quote = Protobuf().text(5, "3A").message(19, Protobuf().text(1, "words"));
  Bytes cut = quote.bytes();
  cut.push_back(0x80);
  EXPECT_EQ(MessageMetadata::read(cut, own), std::nullopt);
  for (const std::uint32_t field : {19U, 24U, 26U, 28U, 42U, 43U, 51U, 87U}) {
    EXPECT_EQ(read(Protobuf(quote).text(field, "\x0B")), std::nullopt) << field;
  }
  for (const std::uint32_t field : {24U, 26U, 42U, 43U, 51U, 87U}) {
    EXPECT_EQ(read(Protobuf(quote).message(field, Protobuf().text(1, "\x0B"))), std::nullopt) << field;
  }
  EXPECT_EQ(read(Protobuf().text(5, std::string(1 << 20, 'a'))), std::nullopt);
}

TEST(MessageMetadata, ALengthMayStandInFront) {
  const Bytes message = Protobuf().text(5, "3A").bytes();
  Bytes withLength = {0, 0, 0, 0, static_cast<std::uint8_t>(message.size())};
  append(withLength, message);
  EXPECT_EQ(MessageMetadata::read(withLength, own), MessageMetadata::read(message, own));
  ++withLength[4];
  EXPECT_EQ(MessageMetadata::read(withLength, own), std::nullopt);
}

Bytes archive(PlistDictionary root, PlistArray objects) {
  objects.insert(objects.begin(), {"$null", std::move(root)});
  return binaryPlist(PlistDictionary{{"$archiver", "NSKeyedArchiver"},
                                     {"$top", PlistDictionary{{"root", PlistUID{1}}}},
                                     {"$objects", std::move(objects)}});
}

TEST(MessageMetadata, OlderVersionsKeptAReplyInAKeyedArchive) {
  const Bytes copy = Protobuf().text(1, "Makes sense").bytes();
  const PlistDictionary root = {
      {"stanzaID", PlistUID{2}}, {"senderJID", PlistUID{3}}, {"quotedMessageData", PlistUID{4}}};
  const MessageMetadata reply{.quote = Quote{.stanzaID = "3A", .sender = Person{.jid = ana}, .words = "Makes sense"}};
  EXPECT_EQ(MessageMetadata::read(archive(root, {"3A", ana, copy}), own), reply);
  EXPECT_EQ(MessageMetadata::read(archive(root, {"3A", ana, PlistDictionary{{"NS.data", copy}}}), own), reply);
  const PlistDictionary empty = {
      {"stanzaID", PlistUID{0}}, {"senderJID", PlistUID{0}}, {"quotedMessageData", PlistUID{9}}};
  EXPECT_EQ(MessageMetadata::read(archive(empty, {}), own), MessageMetadata{});
  EXPECT_EQ(MessageMetadata::read(archive(root, {"3A", ana, Bytes{0x0B}}), own), std::nullopt) << "all or nothing";
  EXPECT_EQ(MessageMetadata::read(archive({{"other", 1}}, {}), own), MessageMetadata{});
  EXPECT_EQ(MessageMetadata::read(bytesOf("bplist00 and nothing of one"), own), std::nullopt);
  EXPECT_EQ(MessageMetadata::read(binaryPlist("text"), own), MessageMetadata{});
}

}  // namespace
}  // namespace Fixture
