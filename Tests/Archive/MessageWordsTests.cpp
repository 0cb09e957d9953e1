#include "TidewellCore/Archive/MessageWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const TranscriptStyle english = TranscriptStyle::english();
const TranscriptStyle portuguese = TranscriptStyle::portuguese();
const Person you{.isOwner = true};
const Person ana{.jid = "ana@s.whatsapp.net"};
const Person ben{.jid = "ben@s.whatsapp.net"};
const Person carla{.jid = "carla@s.whatsapp.net"};

MessageWords::Context context(const TranscriptStyle& style = english) {
  const auto nameOf = [](const Person& person) -> std::optional<std::string> {
    std::string name = person.jid.substr(0, person.jid.find('@'));
    if (name.empty()) return std::nullopt;
    name.front() = static_cast<char>(name.front() - 'a' + 'A');
    return name;
  };
  const auto mentioned = [](std::string_view digits) -> std::optional<std::string> {
    return digits == "15550000002" ? std::optional<std::string>("Ben") : std::nullopt;
  };
  return {.wording = {.style = style, .nameOf = nameOf}, .mentioned = mentioned};
}

ArchiveMessage told(const MessageDetails& details, ArchiveMessage message = {.sender = "Ana"},
                    const MessageWords::Context& around = context()) {
  MessageWords::tell(details, around, message);
  return message;
}

std::string words(const MessageContent& content, const TranscriptStyle& style = english,
                  const ArchiveMessage& message = {.sender = "Ana"}) {
  return told({.content = content}, message, context(style)).text.value_or("");
}

std::string info(const MessageContent& content, const TranscriptStyle& style = english) {
  return ChatArchiveJSON::stringify(told({.content = content}, {.sender = "Ana"}, context(style)).details->info);
}

SharedLocation blueCafe() {
  return {.coordinates = Coordinates{.latitude = 35.638504, .longitude = -78.876053},
          .name = "Blue Cafe",
          .address = "12 Main St"};
}

TEST(MessageWords, APlainMessageStaysAsItIs) {
  const ArchiveMessage plain{.id = "1", .fromMe = true, .sender = "You", .text = "hi @15550000009"};
  EXPECT_EQ(told({}, plain), plain);
}

TEST(MessageWords, APlaceIsNamed) {
  EXPECT_EQ(words(blueCafe()), "Location: Blue Cafe, 12 Main St (35.638504, -78.876053)");
  EXPECT_EQ(words(SharedLocation{.coordinates = Coordinates{.latitude = -0.0000001, .longitude = 180}, .isLive = true}),
            "Live location (0.000000, 180.000000)");
  EXPECT_EQ(words(SharedLocation{.name = "Sea", .address = "Sea"}, portuguese), "Localização: Sea");
  EXPECT_EQ(words(SharedLocation{}), "Location");
  EXPECT_EQ(info(blueCafe()),
            R"({"address":"12 Main St","lat":35.638504,"live":false,"lon":-78.876053,"name":"Blue Cafe"})");
  EXPECT_EQ(info(SharedLocation{.isLive = true}), R"({"live":true})");
}

TEST(MessageWords, ContactsAreNamedWithTheirNumbers) {
  const SharedContact contact{.name = "Carla", .phones = {"+1 555 000 0009"}, .emails = {"c@example.org"}};
  EXPECT_EQ(words(SharedContacts{{contact}}), "Contact: Carla (+1 555 000 0009, c@example.org)");
  EXPECT_EQ(words(SharedContacts{{contact, {.name = "Dora"}, {.phones = {"7"}}}}, portuguese),
            "Contatos: Carla (+1 555 000 0009, c@example.org); Dora; 7");
  EXPECT_EQ(words(SharedContacts{}), "Contact");
  EXPECT_EQ(info(SharedContacts{{contact}}),
            R"({"people":[{"emails":["c@example.org"],"name":"Carla","phones":["+1 555 000 0009"]}]})");
}

TEST(MessageWords, APollTellsItsVotes) {
  const Poll poll{
      .question = "Which day?",
      .options = {{.words = "Monday", .voters = {you}}, {.words = "Friday", .voters = {ben, ana}}, {.words = "Never"}}};
  EXPECT_EQ(words(poll), "Poll: Which day? — Monday (1: You), Friday (2: Ben and Ana), Never (0)");
  EXPECT_EQ(words(poll, portuguese), "Enquete: Which day? — Monday (1: Você), Friday (2: Ben e Ana), Never (0)");
  EXPECT_EQ(words(Poll{}), "Poll");
  EXPECT_EQ(info(poll), R"({"options":[{"names":["You"],"words":"Monday"},{"names":["Ben","Ana"],"words":"Friday"},)"
                        R"({"names":[],"words":"Never"}],"question":"Which day?"})");
}

TEST(MessageWords, ACallTellsHowLongItLasted) {
  EXPECT_EQ(words(CallRecord{.isVideo = false, .seconds = 95}), "Voice call, 1:35");
  EXPECT_EQ(words(CallRecord{.isVideo = true, .seconds = 3723}, portuguese), "Ligação de vídeo, 1:02:03");
  EXPECT_EQ(words(CallRecord{.isVideo = false, .isMissed = true}), "Missed voice call");
  EXPECT_EQ(words(CallRecord{.isVideo = true, .isGroup = true, .isMissed = true}), "Missed group video call");
  EXPECT_EQ(words(CallRecord{.isGroup = true, .seconds = 7}), "Group call, 0:07");
  EXPECT_EQ(words(CallRecord{}), "Call");
  EXPECT_EQ(info(CallRecord{.isVideo = true, .seconds = 7}), R"({"missed":false,"seconds":7,"video":true})");
  EXPECT_EQ(info(CallRecord{.isMissed = true}), R"({"missed":true})");
}

TEST(MessageWords, AnInvitationNamesTheGroup) {
  EXPECT_EQ(words(GroupInvite{.groupName = "Garden", .caption = "Join us"}), "Invitation to the group Garden\nJoin us");
  EXPECT_EQ(words(GroupInvite{}, portuguese), "Convite para um grupo");
  EXPECT_EQ(info(GroupInvite{.groupName = "Garden", .caption = "Join us"}),
            R"({"caption":"Join us","group":"Garden"})");
}

TEST(MessageWords, AProductTellsItsPrice) {
  Product lamp{.title = "A lamp", .description = "It\nshines", .currency = "EUR", .thousandths = 19'990};
  EXPECT_EQ(words(lamp), "Product: A lamp, EUR 19.99\nIt\nshines");
  EXPECT_EQ(info(lamp, portuguese), R"({"description":"It\nshines","price":"EUR 19,99","title":"A lamp"})");
  lamp.description.reset();
  for (const auto& [thousandths, price] :
       std::map<std::int64_t, std::string>{{0, "EUR 0"},
                                           {5'000, "EUR 5"},
                                           {50, "EUR 0.05"},
                                           {1'005, "EUR 1.005"},
                                           {12'345'678'900, "EUR 12345678.90"},
                                           {std::numeric_limits<std::int64_t>::max(), "EUR 9223372036854775.807"}}) {
    lamp.thousandths = thousandths;
    EXPECT_EQ(words(lamp), "Product: A lamp, " + price);
  }
  EXPECT_EQ(words(Product{.title = "A lamp", .currency = "EUR"}), "Product: A lamp");
}

TEST(MessageWords, ABusinessTextHasItsButtonsOnLines) {
  const BusinessText text{.paragraphs = {"Your parcel", "It comes\ntoday", "Reply STOP"},
                          .buttons = {{.words = "Track", .target = "https://example.org/7"}, {.words = "Thanks"}}};
  EXPECT_EQ(words(text), "Your parcel\nIt comes\ntoday\nReply STOP\n[Track] https://example.org/7\n[Thanks]");
  EXPECT_EQ(info(text), R"({"buttons":[{"url":"https://example.org/7","words":"Track"},{"words":"Thanks"}]})");
}

TEST(MessageWords, ADeletedMessageSaysByWhom) {
  const ArchiveMessage mine{.fromMe = true, .sender = "You"};
  EXPECT_EQ(words(DeletedMessage{}), "This message was deleted");
  EXPECT_EQ(words(DeletedMessage{}, english, mine), "You deleted this message");
  EXPECT_EQ(words(DeletedMessage{you}), "You deleted this message");
  EXPECT_EQ(words(DeletedMessage{ben}), "Admin Ben deleted this message");
  EXPECT_EQ(words(DeletedMessage{ben}, portuguese, mine), "Admin Ben apagou esta mensagem");
  EXPECT_EQ(words(DeletedMessage{ana}), "Admin Ana deleted this message") << "who is called like the sender";
  EXPECT_EQ(words(DeletedMessage{Person{.jid = "@lid"}}), "An admin deleted this message");
  EXPECT_EQ(words(DeletedMessage{Person{.jid = "@lid"}}, portuguese), "A mensagem foi apagada por admin do grupo");
  EXPECT_EQ(info(DeletedMessage{Person{.jid = "@lid"}}), "{}");
  EXPECT_EQ(info(DeletedMessage{ben}), R"({"by":"Ben"})");
  EXPECT_EQ(info(DeletedMessage{}), "{}");
}

TEST(MessageWords, AMissingMediumSaysWhatItWas) {
  EXPECT_EQ(words(MissingMedia{}), "Photo (not in the backup)");
  EXPECT_EQ(words(MissingMedia{.part = MessagePart::voiceMessage, .seconds = 7}),
            "Voice message, 0:07 (not in the backup)");
  EXPECT_EQ(words(MissingMedia{.part = MessagePart::document, .fileName = "report.pdf"}, portuguese),
            "Documento: report.pdf (não está no backup)");
  EXPECT_EQ(info(MissingMedia{.part = MessagePart::document, .seconds = 7, .fileName = "a.pdf"}),
            R"({"name":"a.pdf","part":"document","seconds":7})");
}

TEST(MessageWords, ADocumentsNameStandsAboveItsCaption) {
  const MessageDetails named{.heading = "report.pdf"};
  EXPECT_EQ(told(named, {.sender = "Ana", .text = "read it"}).text, "report.pdf\nread it");
  EXPECT_FALSE(told(named).details) << "the words say all of it";
}

TEST(MessageWords, ACaptionStandsInThePlaceOfAMissingMedium) {
  const ArchiveMessage message = told({.content = MissingMedia{}}, {.text = "the sea"});
  EXPECT_EQ(message.text, "the sea");
  EXPECT_EQ(ChatArchiveJSON::stringify(message.details->info), R"({"caption":"the sea","part":"photo"})");
}

TEST(MessageWords, ACaptionIsKeptThoughTheWordsHoldIt) {
  for (const char* caption : {"no", "a", "backup", "Photo", "Foto"}) {
    const MissingMedia photo{.part = MessagePart::photo};
    EXPECT_EQ(words(photo, english, {.sender = "Ana", .text = caption}), caption);
    EXPECT_EQ(words(photo, portuguese, {.sender = "Ana", .text = caption}), caption);
  }
  EXPECT_THAT(words(CallRecord{.isVideo = false}, english, {.sender = "Ana", .text = "call"}), HasSubstr("\ncall"));
}

TEST(MessageWords, AFactThatStandsInTheTextTooIsToldOnce) {
  EXPECT_EQ(words(Poll{.question = "Which day?"}, english, {.sender = "Ana", .text = "Which day? "}),
            "Poll: Which day?");
  const SharedLocation place{.name = "Blue Cafe"};
  EXPECT_EQ(words(place, english, {.sender = "Ana", .text = "Blue Cafe"}), "Location: Blue Cafe");
}

TEST(MessageWords, WhatWasWrittenBesideAKindFollowsItsWords) {
  EXPECT_EQ(words(SharedLocation{}, english, {.text = "come here"}), "Location\ncome here");
  EXPECT_EQ(words(Poll{.question = "Which day?"}, english, {.text = " Which day? "}), "Poll: Which day?");
}

TEST(MessageWords, WhatNobodyKnowsStaysCalm) {
  EXPECT_EQ(words(UnsupportedMessage{.type = 91}), "Unsupported message (type 91)");
  EXPECT_EQ(words(UnsupportedMessage{.type = -1}, portuguese), "Mensagem não compatível (tipo -1)");
  EXPECT_EQ(words(WaitingMessage{}), "Waiting for this message");
  EXPECT_EQ(info(UnsupportedMessage{.type = 91}), R"({"type":91})");
  EXPECT_EQ(told({.content = WaitingMessage{}}).kind(), ArchiveKind::waiting);
}

TEST(MessageWords, ALinkKeepsItsText) {
  const ArchiveMessage message =
      told({.content = LinkPreview{.url = "https://example.org", .title = "An example\npage", .summary = "All"}},
           {.text = "see https://example.org"});
  EXPECT_EQ(message.kind(), ArchiveKind::none);
  EXPECT_EQ(message.text, "see https://example.org");
  EXPECT_EQ(ChatArchiveJSON::stringify(message.details->info),
            R"({"link":{"summary":"All","title":"An example page","url":"https://example.org"}})");
}

TEST(MessageWords, ANoticeHasNoSender) {
  const ArchiveMessage message = told({.content = Notice{.kind = NoticeKind::memberLeft, .code = 3, .actor = you}},
                                      {.fromMe = true, .sender = "You"});
  EXPECT_EQ(message.text, "You left");
  EXPECT_EQ(message.sender, "");
  EXPECT_FALSE(message.fromMe);
  EXPECT_EQ(ChatArchiveJSON::stringify(message.details->info), R"({"code":3,"type":"memberLeft"})");
}

TEST(MessageWords, AReplyNamesWhatItAnswers) {
  MessageWords::Context around = context();
  around.answered = {.id = "15", .sender = "Ana"};
  const Quote caption{.sender = ana, .part = MessagePart::photo, .words = "the\nsea"};
  EXPECT_EQ(told({.quote = caption}, {.text = "a"}, around).details->quote,
            (ArchiveQuote{.name = "Ana", .part = MessagePart::photo, .words = "the sea", .toID = "15"}));
  EXPECT_EQ(
      told({.quote = Quote{.sender = you, .part = MessagePart::voiceMessage}}).details->quote,
      (ArchiveQuote{.isOwner = true, .name = "You", .part = MessagePart::voiceMessage, .words = "Voice message"}));
  EXPECT_EQ(told({.quote = Quote{}}).details->quote, (ArchiveQuote{.words = "Message"}));
}

TEST(MessageWords, AReplyWithoutACopyTellsOfItsOriginal) {
  MessageWords::Context around = context();
  around.answered = {.id = "15", .isOwner = true, .sender = "You", .part = MessagePart::photo, .text = "the sea"};
  EXPECT_EQ(
      told({.quote = Quote{.sender = ana}}, {.text = "a"}, around).details->quote,
      (ArchiveQuote{.isOwner = true, .name = "You", .part = MessagePart::photo, .words = "the sea", .toID = "15"}));
}

TEST(MessageWords, TheMostFrequentReactionsComeFirst) {
  const auto reactions = told({.reactions = {{.emoji = "❤️", .person = ana},
                                             {.emoji = "👍", .person = ben},
                                             {.emoji = "😂", .person = carla},
                                             {.emoji = "👍", .person = you},
                                             {.emoji = "🎉", .count = 40}}})
                             .details->reactions;
  EXPECT_THAT(reactions, ElementsAre(ArchiveReaction{.emoji = "🎉", .names = {}, .count = 40},
                                     ArchiveReaction{.emoji = "👍", .names = {"Ben", "You"}, .count = 2},
                                     ArchiveReaction{.emoji = "❤️", .names = {"Ana"}, .count = 1},
                                     ArchiveReaction{.emoji = "😂", .names = {"Carla"}, .count = 1}));
}

TEST(MessageWords, MarksAreKept) {
  const MessageMarks marks{.isForwarded = true, .isViewOnce = true};
  EXPECT_EQ(told({.marks = marks}).details->marks, marks);
}

TEST(MessageWords, PeopleInATextAreNamed) {
  const ArchiveMessage message = told({}, {.text = "hi @15550000002, @15550000003 and a@15550000002!"});
  EXPECT_EQ(message.details->mentions, (Mentions::Names{{"15550000002", "Ben"}}));
  EXPECT_EQ(message.text, "hi @15550000002, @15550000003 and a@15550000002!");
  EXPECT_EQ(MessageWords::text(message), "hi @Ben, @15550000003 and a@15550000002!");
}

TEST(Mentions, AreWholeDigitsOfKnownPeople) {
  const Mentions::Names names{{"12345", "@67890"}, {"67890", "Ben"}, {"1234", "X"}};
  EXPECT_EQ(Mentions::named("@12345@67890", names), "@@67890@67890");  // the second goes on a word
  EXPECT_EQ(Mentions::named("@12345 @67890.", names), "@@67890 @Ben.");
  EXPECT_EQ(Mentions::named("@1234 @123456 @12345a @@12345 @", names), "@1234 @123456 @12345a @@@67890 @");
  const auto everybody = [](std::string_view) { return std::optional<std::string>("A\nB"); };
  EXPECT_EQ(Mentions::in("@12345 @1234 @123456789012345678901", everybody), (Mentions::Names{{"12345", "A B"}}));
  EXPECT_THAT(Mentions::in("@12345", {}), IsEmpty());
}

TEST(MessageWords, NothingThatPeopleWroteBreaksOut) {
  const std::string evil = "a\x01\r\n{name}\u2028\"<script>";
  const std::string line = "a\uFFFD {name} \"<script>";
  const std::vector<MessageContent> contents{
      SharedLocation{.name = evil, .address = evil},
      SharedContacts{{{.name = evil, .phones = {evil}, .emails = {evil}}}},
      Poll{.question = evil, .options = {{.words = evil}}},
      GroupInvite{.groupName = evil},
      Product{.title = evil},
      MissingMedia{.part = MessagePart::document, .fileName = evil},
      Notice{.kind = NoticeKind::groupRenamed, .parameter = evil},
  };
  for (const MessageContent& content : contents) {
    const std::string text = words(content);
    EXPECT_THAT(text, HasSubstr(line)) << text;
    EXPECT_THAT(text, Not(HasSubstr("\n"))) << text;
    EXPECT_THAT(info(content), Not(HasSubstr("\\n")));
  }
}

TEST(MessageWords, TheArchivesJSONHoldsNoKeyTwiceOverThatReadersLookFor) {
  MessageDetails details{.content = blueCafe(), .quote = Quote{.words = "w"}, .reactions = {{.emoji = "x"}}};
  ArchiveMessage message = told(details, {.id = "1", .sender = "Ana", .timestamp = 1});
  const std::string json = ChatArchiveJSON::stringify(ArchiveFormat::json(message));
  for (const char* key : {"\"text\":", "\"ts\":"}) EXPECT_EQ(json.find(key), json.rfind(key)) << json;
  EXPECT_EQ(ArchiveFormat::message(ArchiveFormat::json(message)), message);
}

}  // namespace
