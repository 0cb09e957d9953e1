#include "TidewellCore/ChatData/MessageDecoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "Tests/Support/ProtobufWriter.h"

namespace Fixture {
namespace {

const std::array<std::string, 1> own = {"15550000001@s.whatsapp.net"};
constexpr const char* anaJID = "15550000002@s.whatsapp.net";
constexpr const char* benJID = "15550000003@s.whatsapp.net";

const Person owner{.isOwner = true};
const Person ana{.jid = anaJID};
const Person ben{.jid = benJID};

DecodedMessage decode(MessageRow row) {
  row.ownJIDs = own;
  return MessageDecoder::decode(row);
}

// A message of nothing but this content.
DecodedMessage of(MessageContent content, std::optional<std::string_view> text = std::nullopt) {
  return {.text = text, .details = MessageDetails{.content = std::move(content)}};
}

DecodedMessage plain(std::string_view text) { return {.text = text}; }

DecodedMessage withMarks(DecodedMessage message, MessageMarks marks) {
  if (!message.details) message.details.emplace();
  message.details->marks = marks;
  return message;
}

TEST(MessageDecoder, PlainTextsAndFilesHaveNoDetails) {
  EXPECT_EQ(decode({.type = 0, .text = "Hello"}), plain("Hello"));
  EXPECT_EQ(decode({.type = 0}), DecodedMessage{});
  EXPECT_EQ(decode({.type = 0, .eventType = 2, .text = "Hello"}), plain("Hello")) << "a direction mark";
  for (const std::int64_t type : {1, 2, 3, 15}) {
    EXPECT_EQ(decode({.type = type, .hasFile = true, .vCardString = "image/jpeg", .duration = 7}), DecodedMessage{})
        << type;
  }
  EXPECT_EQ(decode({.type = 8, .text = "report.pdf", .hasFile = true}), DecodedMessage{.text = "report.pdf"});
  const Bytes unknown = Protobuf().text(4, "/v/t62").integer(216, 1).bytes();
  EXPECT_EQ(decode({.type = 1, .hasFile = true, .metadata = unknown}), DecodedMessage{});
}

TEST(MessageDecoder, ATitleIsTheCaption) {
  for (const std::int64_t type : {1, 2}) {
    EXPECT_EQ(decode({.type = type, .hasFile = true, .title = "caption"}), plain("caption")) << type;
    EXPECT_EQ(decode({.type = type, .text = "text", .hasFile = true, .title = " "}), plain("text")) << type;
    EXPECT_EQ(decode({.type = type, .text = "text", .hasFile = true}), plain("text")) << type;
  }
  EXPECT_EQ(decode({.type = 3, .hasFile = true, .title = "no caption"}), DecodedMessage{});
}

TEST(MessageDecoder, SomeMediaAreMarked) {
  EXPECT_EQ(decode({.type = 11, .hasFile = true}), withMarks({}, {.isGIF = true}));
  EXPECT_EQ(decode({.type = 54, .hasFile = true}), withMarks({}, {.isRound = true}));
  for (const std::int64_t type : {38, 39, 53}) {
    EXPECT_EQ(decode({.type = type, .hasFile = true}), withMarks({}, {.isViewOnce = true})) << type;
  }
}

TEST(MessageDecoder, AMediumWithoutAFileSaysWhatItWas) {
  using enum MessagePart;
  const auto missing = [](std::int64_t type, std::string_view mime) {
    return std::get<MissingMedia>(decode({.type = type, .vCardString = mime, .duration = 7}).details.value().content);
  };
  EXPECT_EQ(missing(1, "image/jpeg"), (MissingMedia{.part = photo}));
  EXPECT_EQ(missing(2, "video/mp4"), (MissingMedia{.part = video, .seconds = 7}));
  EXPECT_EQ(missing(3, "audio/ogg; codecs=opus"), (MissingMedia{.part = voiceMessage, .seconds = 7}));
  EXPECT_EQ(missing(3, "audio/mpeg"), (MissingMedia{.part = audio, .seconds = 7}));
  EXPECT_EQ(missing(3, ""), (MissingMedia{.part = voiceMessage, .seconds = 7}));
  EXPECT_EQ(missing(8, "application/pdf"), (MissingMedia{.part = document}));
  EXPECT_EQ(missing(11, "video/mp4"), (MissingMedia{.part = gif, .seconds = 7}));
  EXPECT_EQ(missing(15, "image/webp"), (MissingMedia{.part = sticker}));
  EXPECT_EQ(missing(38, "image/jpeg"), (MissingMedia{.part = photo}));
  EXPECT_EQ(missing(39, "video/mp4"), (MissingMedia{.part = video, .seconds = 7}));
  EXPECT_EQ(missing(53, "audio/ogg; codecs=opus"), (MissingMedia{.part = voiceMessage, .seconds = 7}));
  EXPECT_EQ(missing(54, "video/mp4"), (MissingMedia{.part = videoNote, .seconds = 7}));
  EXPECT_EQ(decode({.type = 1, .title = "caption"}), of(MissingMedia{.part = photo}, "caption"));
  EXPECT_EQ(decode({.type = 38}), withMarks(of(MissingMedia{.part = photo}), {.isViewOnce = true}));
  for (const std::int64_t duration : {std::int64_t{-1}, std::int64_t{0}, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(decode({.type = 3, .duration = duration}), of(MissingMedia{.part = voiceMessage})) << duration;
  }
}

TEST(MessageDecoder, ADocumentHasANameAndMayHaveACaption) {
  EXPECT_EQ(decode({.type = 8, .text = "report.pdf", .hasFile = true, .title = "read it"}),
            (DecodedMessage{.text = "read it", .details = MessageDetails{.heading = "report.pdf"}}));
  EXPECT_EQ(decode({.type = 8, .text = "Report.pdf", .hasFile = true, .title = "Report"}),
            DecodedMessage{.text = "Report.pdf"});
  EXPECT_EQ(decode({.type = 8, .text = "report.pdf", .hasFile = true, .title = "report.pdf"}),
            (DecodedMessage{.text = "report.pdf"}));
  EXPECT_EQ(decode({.type = 8, .hasFile = true, .title = "report.pdf"}), (DecodedMessage{.text = "report.pdf"}));
  EXPECT_EQ(decode({.type = 8, .text = "report.pdf", .title = "read it"}),
            (DecodedMessage{.text = "read it",
                            .details = MessageDetails{
                                .content = MissingMedia{.part = MessagePart::document, .fileName = "report.pdf"}}}));
  EXPECT_EQ(decode({.type = 8, .text = "report.pdf"}).text, std::nullopt) << "the name alone is no caption";
}

TEST(MessageDecoder, ContactsAreRead) {
  EXPECT_EQ(decode({.type = 4, .vCardName = "Carla", .vCardString = "FN:Carla\nTEL:+1 555 000 0009"}),
            of(SharedContacts{{{.name = "Carla", .phones = {"+1 555 000 0009"}}}}));
  EXPECT_EQ(decode({.type = 4}), of(SharedContacts()));
}

const Coordinates cafe{.latitude = 35.638504, .longitude = -78.876053};

TEST(MessageDecoder, PlacesAreRead) {
  const MessageRow row{.type = 5,
                       .title = "Blue Cafe",
                       .vCardName = "12 Main St",
                       .latitude = cafe.latitude,
                       .longitude = cafe.longitude};
  SharedLocation place{.coordinates = cafe, .name = "Blue Cafe", .address = "12 Main St"};
  EXPECT_EQ(decode(row), of(place));
  MessageRow live = row;
  live.mediaOrigin = 1;
  EXPECT_EQ(decode(live), of(place)) << "both are needed";
  live.authorName = "1679774950000000";
  place.isLive = true;
  EXPECT_EQ(decode(live), of(place));
  EXPECT_EQ(decode({.type = 5, .vCardString = "35.638504;-78.876053"}), of(SharedLocation{.coordinates = cafe}));
}

TEST(MessageDecoder, APlaceIsOnEarth) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [latitude, longitude] :
       {std::pair(91.0, 0.0), std::pair(-91.0, 0.0), std::pair(0.0, 181.0), std::pair(0.0, -181.0), std::pair(nan, 0.0),
        std::pair(0.0, nan), std::pair(infinity, 0.0), std::pair(0.0, -infinity)}) {
    EXPECT_EQ(decode({.type = 5, .latitude = latitude, .longitude = longitude}), of(SharedLocation()));
  }
  EXPECT_EQ(decode({.type = 5, .latitude = 90}), of(SharedLocation()));
  const auto zero = decode({.type = 5, .latitude = -0.0, .longitude = -0.0});
  EXPECT_FALSE(std::signbit(std::get<SharedLocation>(zero.details.value().content).coordinates.value().latitude));
  for (const char* text : {"", ";", "1", "1;", "a;b", "91;0", "nan;nan", "1;2;3", "text/vcard"}) {
    EXPECT_EQ(decode({.type = 5, .vCardString = text}), of(SharedLocation())) << text;
  }
}

// Nobody writes a text beside these, and phones may keep what only machines read in its place.
TEST(MessageDecoder, WhatOnlyMachinesReadIsNoTextBesideAKind) {
  const Protobuf lamp = Protobuf().message(1, Protobuf().text(3, "A lamp"));
  const Bytes product = Protobuf().message(26, Protobuf().message(1, lamp)).bytes();
  for (const std::int64_t type : {3, 4, 5, 15, 26, 46, 91}) {
    for (const char* text : {anaJID, R"({"poll":1})", R"([{"a":1}])", "COah/ZEGIAA=", "\n{\"a\":1}", " "}) {
      EXPECT_EQ(decode({.type = type, .text = text, .metadata = product}).text, std::nullopt) << type << text;
      EXPECT_EQ(decode({.type = type, .text = text, .hasFile = true, .metadata = product}).text, std::nullopt) << type;
    }
    EXPECT_EQ(decode({.type = type, .text = "words", .metadata = product}).text, "words") << type;
  }
}

TEST(MessageDecoder, GroupEventsAndNoticesHaveNoText) {
  EXPECT_EQ(decode({.type = 6, .eventType = 1, .text = "Garden", .memberJID = anaJID}),
            of(Notice{.kind = NoticeKind::groupRenamed, .code = 1, .actor = ana, .parameter = "Garden"}));
  EXPECT_EQ(decode({.type = 6, .eventType = 12, .creatorJID = own[0]}),
            of(Notice{.kind = NoticeKind::groupCreated, .code = 12, .actor = owner}));
  EXPECT_EQ(decode({.type = 6, .eventType = 77, .isFromMe = true, .text = R"({"a":1})"}),
            of(Notice{.kind = NoticeKind::unknownGroupEvent, .code = 77}));
  EXPECT_EQ(decode({.type = 10, .eventType = 2}), of(Notice{.kind = NoticeKind::encrypted, .code = 2}));
  EXPECT_EQ(decode({.type = 10, .eventType = 58, .text = "x"}),
            of(Notice{.kind = NoticeKind::unknownNotice, .code = 58}));
  for (const bool isFromMe : {false, true}) {
    DecodedMessage missed = of(CallRecord{.isVideo = true, .isMissed = true});
    missed.isIncoming = true;
    EXPECT_EQ(decode({.type = 10, .eventType = 46, .isFromMe = isFromMe}), missed) << "whoever's row it is";
  }
  EXPECT_FALSE(decode({.type = 10, .eventType = 40}).isIncoming);
  EXPECT_EQ(decode({.type = 55, .eventType = 1}), of(Notice{.kind = NoticeKind::channelCreated, .code = 1}));
}

TEST(MessageDecoder, ALinkHasAPreview) {
  const LinkPreview preview{.url = "https://a.example/", .title = "A page", .summary = "About it"};
  EXPECT_EQ(decode({.type = 7,
                    .text = "see a.example",
                    .linkURL = "https://a.example/",
                    .linkTitle = "A page",
                    .linkSummary = "About it"}),
            of(preview, "see a.example"));
  const Bytes metadata = Protobuf().text(3, "About it").bytes();
  EXPECT_EQ(decode({.type = 7, .title = "A page", .mediaURL = "https://a.example/", .metadata = metadata}),
            of(preview, "https://a.example/"));
  EXPECT_EQ(decode({.type = 7, .text = "https://a.example/", .linkURL = "https://a.example/"}),
            plain("https://a.example/"));
  EXPECT_EQ(decode({.type = 0, .text = "t", .linkURL = "https://a.example/", .linkTitle = "A page"}),
            of(LinkPreview{.url = "https://a.example/", .title = "A page"}, "t"));
  const Bytes advertisement =
      Protobuf().message(42, Protobuf().message(1, Protobuf().text(9, "https://s.example"))).bytes();
  EXPECT_EQ(decode({.type = 0, .text = "Is it there?", .metadata = advertisement}),
            of(LinkPreview{.url = "https://s.example"}, "Is it there?"));
}

TEST(MessageDecoder, AMessageMayBeWaitedFor) { EXPECT_EQ(decode({.type = 12}), of(WaitingMessage())); }

TEST(MessageDecoder, ADeletedMessageSaysWhoDeletedIt) {
  const auto by = [](std::optional<Person> remover) { return of(DeletedMessage{.remover = remover}); };
  EXPECT_EQ(decode({.type = 14, .title = "3A0F99"}), by(std::nullopt)) << "the title is an ID and no caption";
  EXPECT_EQ(decode({.type = 14, .memberJID = anaJID, .vCardString = anaJID}), by(Person{.jid = anaJID}))
      << "whether that is its sender is known later";
  EXPECT_EQ(decode({.type = 14, .memberJID = anaJID, .vCardString = benJID}), by(ben));
  EXPECT_EQ(decode({.type = 14, .memberJID = anaJID, .vCardString = own[0]}), by(owner));
  EXPECT_EQ(decode({.type = 14, .isFromMe = true}), by(owner));
  EXPECT_EQ(decode({.type = 14, .isFromMe = true, .vCardString = own[0]}), by(owner));
  EXPECT_EQ(decode({.type = 14, .isFromMe = true, .vCardString = benJID}), by(ben));
  EXPECT_EQ(MessageDecoder::decode({.type = 14, .isFromMe = true, .vCardString = own[0]}), by(owner))
      << "whose JID is not known";
  const Bytes reply = Protobuf().text(5, "3A").bytes();
  EXPECT_EQ(decode({.type = 14, .isStarred = true, .metadata = reply}), by(std::nullopt)) << "nothing of it is left";
}

TEST(MessageDecoder, ATextBesideWhatABusinessSendsIsKept) {
  const Bytes footer = Protobuf().message(51, Protobuf().message(1, Protobuf().text(7, "The bakery"))).bytes();
  const auto paragraphs = [&](std::string_view text) {
    const DecodedMessage decoded = decode({.type = 41, .text = text, .metadata = footer});
    return std::get<BusinessText>(decoded.details.value().content).paragraphs;
  };
  EXPECT_EQ(paragraphs("Which taste?"), (std::vector<std::string>{"Which taste?", "The bakery"}));
  EXPECT_EQ(paragraphs("Which taste?\nThe bakery"), std::vector<std::string>{"Which taste?\nThe bakery"});
  EXPECT_EQ(paragraphs("The bakery "), std::vector<std::string>{"The bakery"});
}

TEST(MessageDecoder, APreviewThatStandsAloneIsTheText) {
  const DecodedMessage decoded = decode({.type = 7, .title = "A page", .mediaURL = "https://example.org/"});
  EXPECT_EQ(decoded.text, "https://example.org/");
  EXPECT_EQ(decoded.details.value().content,
            MessageContent(LinkPreview{.url = "https://example.org/", .title = "A page"}));
  EXPECT_EQ(decode({.type = 7, .title = "A page"}).text, "A page");
}

TEST(MessageDecoder, ATitleBesideATextIsKept) {
  EXPECT_EQ(decode({.type = 1, .text = "the text", .hasFile = true, .title = "the title"}),
            (DecodedMessage{.text = "the text", .details = MessageDetails{.heading = "the title"}}));
  EXPECT_EQ(decode({.type = 1, .text = "one", .hasFile = true, .title = "one "}), DecodedMessage{.text = "one"});
  EXPECT_EQ(decode({.type = 3, .hasFile = true, .title = "A song", .vCardString = "audio/mpeg"}).details,
            MessageDetails{.heading = "A song"});
}

TEST(MessageDecoder, WhatBusinessesSendIsRead) {
  const Protobuf words = Protobuf().text(2, "Your order").text(6, "On its way");
  const Bytes metadata = Protobuf().message(24, Protobuf().message(1, words)).bytes();
  for (const std::int64_t type : {19, 20, 23, 24, 30, 32, 41, 42}) {
    EXPECT_EQ(decode({.type = type, .text = "On its way", .metadata = metadata}),
              of(BusinessText{.paragraphs = {"Your order", "On its way"}}))
        << type;
    EXPECT_EQ(decode({.type = type, .text = "On its way"}), plain("On its way")) << type;
    EXPECT_EQ(decode({.type = type}), of(UnsupportedMessage{.type = type})) << type;
  }
  const Protobuf button = Protobuf().message(8, Protobuf().message(1, Protobuf().text(1, "Yes")));
  const Bytes buttons = Protobuf().message(24, Protobuf().message(1, button)).bytes();
  EXPECT_EQ(decode({.type = 24, .text = "Well?", .metadata = buttons}),
            of(BusinessText{.paragraphs = {"Well?"}, .buttons = {{.words = "Yes"}}}));
}

TEST(MessageDecoder, TheMimeTypeTellsWhatAFileOfAnUnknownTypeIs) {
  EXPECT_EQ(decode({.type = 20, .hasFile = true, .title = "caption", .vCardString = "image/jpeg"}), plain("caption"));
  EXPECT_EQ(decode({.type = 43, .hasFile = true}), DecodedMessage{});
  EXPECT_EQ(decode({.type = 20, .vCardString = "image/jpeg"}), of(MissingMedia{.part = MessagePart::photo}));
  EXPECT_EQ(decode({.type = 24, .vCardString = "application/pdf"}), of(MissingMedia{.part = MessagePart::document}));
  EXPECT_EQ(decode({.type = 43, .vCardString = "Video/MP4", .duration = 9}),
            of(MissingMedia{.part = MessagePart::video, .seconds = 9}));
  EXPECT_EQ(decode({.type = 43, .vCardString = "image/\nx"}), of(UnsupportedMessage{.type = 43}));
}

TEST(MessageDecoder, AnswersAreTheirText) {
  for (const std::int64_t type : {25, 31, 34}) {
    EXPECT_EQ(decode({.type = type, .text = "Yes"}), plain("Yes")) << type;
    EXPECT_EQ(decode({.type = type}), of(UnsupportedMessage{.type = type})) << type;
  }
}

TEST(MessageDecoder, ProductsInvitationsAndTimersAreRead) {
  const Protobuf lamp = Protobuf().text(3, "A lamp").text(5, "EUR").integer(6, 19'990);
  const Bytes product = Protobuf().message(26, Protobuf().message(1, Protobuf().message(1, lamp))).bytes();
  EXPECT_EQ(decode({.type = 26, .metadata = product}),
            of(Product{.title = "A lamp", .currency = "EUR", .thousandths = 19'990}));
  EXPECT_EQ(decode({.type = 26}), of(UnsupportedMessage{.type = 26}));
  const Bytes invite = Protobuf().message(28, Protobuf().text(2, "secret").text(4, "Garden")).bytes();
  EXPECT_EQ(decode({.type = 27, .text = "https://chat.example/secret", .metadata = invite}),
            of(GroupInvite{.groupName = "Garden"}));
  EXPECT_EQ(decode({.type = 27}), of(GroupInvite()));
  const Bytes timer = Protobuf().integer(36, 604'800).bytes();
  EXPECT_EQ(decode({.type = 28, .eventType = 2, .metadata = timer}),
            of(Notice{.kind = NoticeKind::defaultTimerSet, .seconds = 604'800}));
  EXPECT_EQ(decode({.type = 28}), of(UnsupportedMessage{.type = 28}));
}

TEST(MessageDecoder, APollHasItsVotes) {
  const Bytes receipts = Protobuf()
                             .message(8, Protobuf()
                                             .text(2, "When?")
                                             .message(3, Protobuf().text(1, "Now"))
                                             .message(5, Protobuf().integer(1, 0).text(4, anaJID)))
                             .bytes();
  EXPECT_EQ(decode({.type = 46, .receiptInfo = receipts}),
            of(Poll{.question = "When?", .options = {{.words = "Now", .voters = {ana}}}}));
  EXPECT_EQ(decode({.type = 46}), of(Poll()));
  EXPECT_EQ(decode({.type = 0, .text = "t", .receiptInfo = receipts}), plain("t")) << "only polls have votes";
}

TEST(MessageDecoder, ACallHasALengthWhenItWasTaken) {
  const auto metadata = [](std::int64_t seconds) {
    return Protobuf().message(87, Protobuf().message(1, Protobuf().integer(3, seconds))).bytes();
  };
  const Bytes taken = metadata(95);
  const Bytes lost = metadata(0);
  const Bytes other = Protobuf().integer(216, 1).bytes();
  const Bytes damaged = {0x0B};
  EXPECT_EQ(decode({.type = 59, .eventType = 3, .text = "x", .metadata = taken}), of(CallRecord{.seconds = 95}));
  EXPECT_EQ(decode({.type = 59, .metadata = lost}), of(CallRecord{.isMissed = true}));
  EXPECT_EQ(decode({.type = 59, .metadata = other}), of(CallRecord{.isMissed = true}));
  EXPECT_EQ(decode({.type = 59, .isFromMe = true, .metadata = lost}), of(CallRecord()));
  EXPECT_EQ(decode({.type = 59, .metadata = damaged}), of(CallRecord())) << "it may have been taken";
  EXPECT_EQ(decode({.type = 59}), of(CallRecord()));
}

TEST(MessageDecoder, WhatBelongsToAnotherMessageIsHidden) {
  EXPECT_EQ(decode({.type = 66}), DecodedMessage{.isHidden = true});
  EXPECT_EQ(decode({.type = 66, .text = "words"}), plain("words"));
  EXPECT_EQ(decode({.type = 66, .hasFile = true}), DecodedMessage{});
  const Bytes metadata = Protobuf().integer(216, 1).bytes();
  EXPECT_EQ(decode({.type = 66, .metadata = metadata}), DecodedMessage{.isHidden = true});
}

// One flipped bit makes a video, of type 2, into it.
TEST(MessageDecoder, WhatHasAMediumOfItsOwnBelongsToNoOtherMessage) {
  EXPECT_EQ(decode({.type = 66, .vCardString = "video/mp4", .duration = 9}),
            of(MissingMedia{.part = MessagePart::video, .seconds = 9}));
  const auto unsupported = of(UnsupportedMessage{.type = 66});
  EXPECT_EQ(decode({.type = 66, .namesFile = true}), unsupported);
  EXPECT_EQ(decode({.type = 66, .duration = 9}), unsupported);
  EXPECT_EQ(decode({.type = 66, .latitude = 1600}), unsupported);
  EXPECT_EQ(decode({.type = 66, .mediaURL = "https://example.org/x.enc"}), unsupported);
  EXPECT_EQ(decode({.type = 66, .title = "a name"}), unsupported);
  EXPECT_EQ(decode({.type = 66, .title = "a caption", .vCardString = "image/jpeg"}).text, "a caption");
}

TEST(MessageDecoder, ATypeThatNobodyKnowsIsKept) {
  for (const std::int64_t type :
       {std::int64_t{60}, std::int64_t{63}, std::int64_t{73}, std::int64_t{75}, std::int64_t{76}, std::int64_t{91},
        std::int64_t{-1}, std::int64_t{1} << 62, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(decode({.type = type}), of(UnsupportedMessage{.type = type})) << type;
    EXPECT_EQ(decode({.type = type, .text = "words"}), plain("words")) << type;
    for (const char* text : {anaJID, R"({"a":1})", R"([{"a":1}])", "COah/ZEGIAA="}) {
      EXPECT_EQ(decode({.type = type, .text = text}), of(UnsupportedMessage{.type = type})) << text;
    }
  }
}

TEST(MessageDecoder, AReplyHasItsQuote) {
  const Bytes metadata = Protobuf().text(5, "3A").text(6, anaJID).message(19, Protobuf().text(1, "words")).bytes();
  const Quote quote{.stanzaID = "3A", .sender = ana, .words = "words"};
  EXPECT_EQ(decode({.type = 0, .text = "t", .metadata = metadata}),
            (DecodedMessage{.text = "t", .details = MessageDetails{.quote = quote}}));
  EXPECT_EQ(decode({.type = 1, .metadata = metadata}).details,
            (MessageDetails{.content = MissingMedia{.part = MessagePart::photo}, .quote = quote}));
}

TEST(MessageDecoder, ReactionsStandUnderAnyMessage) {
  const Bytes receipts = Protobuf().message(7, Protobuf().message(2, Protobuf().text(2, "👍").integer(3, 5))).bytes();
  const MessageDetails liked{.reactions = {{.emoji = "👍", .person = owner, .milliseconds = 5}}};
  EXPECT_EQ(decode({.type = 0, .text = "t", .receiptInfo = receipts}), (DecodedMessage{.text = "t", .details = liked}));
  EXPECT_EQ(decode({.type = 1, .hasFile = true, .receiptInfo = receipts}), (DecodedMessage{.details = liked}));
}

TEST(MessageDecoder, MessagesAreForwardedAndStarred) {
  EXPECT_EQ(decode({.type = 0, .isStarred = true, .text = "t"}), withMarks(plain("t"), {.isStarred = true}));
  EXPECT_EQ(decode({.type = 0, .flags = 0x180, .text = "t"}), withMarks(plain("t"), {.isForwarded = true}));
  EXPECT_EQ(decode({.type = 0, .flags = 0x1000180, .text = "t"}), withMarks(plain("t"), {.isForwarded = true}));
  for (const std::int64_t flags : {std::int64_t{0x100}, std::int64_t{0x80}, std::int64_t{-1}, INT64_MIN + 0x180}) {
    EXPECT_EQ(decode({.type = 0, .flags = flags, .text = "t"}), plain("t")) << flags;
  }
  const Bytes metadata = Protobuf().integer(17, 3).bytes();
  EXPECT_EQ(decode({.type = 1, .hasFile = true, .metadata = metadata}), withMarks({}, {.isForwarded = true}));
  EXPECT_EQ(decode({.type = 10, .eventType = 2, .flags = 0x180, .isStarred = true}),
            of(Notice{.kind = NoticeKind::encrypted, .code = 2}))
      << "nobody sent it";
}

TEST(MessageDecoder, ABlobThatIsWrongIsAsGoodAsAbsent) {
  Bytes metadata = Protobuf().text(5, "3A").integer(17, 1).bytes();
  metadata.push_back(0x0B);
  Bytes receipts = Protobuf().message(7, Protobuf().message(2, Protobuf().text(2, "👍"))).bytes();
  receipts.push_back(0x80);
  EXPECT_EQ(decode({.type = 0, .text = "t", .metadata = metadata, .receiptInfo = receipts}), plain("t"));
  const Bytes huge((1 << 20) + 1, 0x08);
  EXPECT_EQ(decode({.type = 46, .metadata = huge, .receiptInfo = huge}), of(Poll()));
}

}  // namespace
}  // namespace Fixture
