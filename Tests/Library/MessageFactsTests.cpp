#include "TidewellCore/Library/MessageFacts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <set>
#include <string>

using namespace std::string_literals;

namespace {

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

const Person you{.isOwner = true};
const Person ana{.jid = "1@lid"};

// One function for each record, all of whose members are other than in a record that nobody has filled. The
// bindings fail to compile when a record gets another member.

std::monostate filled(std::monostate) { return {}; }

Person filled(Person person) {
  auto& [jid, isOwner] = person;
  jid = "5511900001111@s.whatsapp.net";
  isOwner = true;
  return person;
}

SharedLocation filled(SharedLocation location) {
  auto& [coordinates, name, address, isLive] = location;
  coordinates = Coordinates{-23.5505199, 0.1};
  name = "Praça da Sé";
  address = "São Paulo\n\"Centro\"";
  isLive = true;
  return location;
}

SharedContacts filled(SharedContacts shared) {
  auto& [contacts] = shared;
  auto& [name, phones, emails] = contacts.emplace_back();
  name = "Zoë";
  phones = {"+1", "+2"};
  emails = {"z@example.org"};
  contacts.emplace_back();
  return shared;
}

LinkPreview filled(LinkPreview preview) {
  auto& [url, title, summary] = preview;
  url = "https://example.org/";
  title = "Example";
  summary = "An example";
  return preview;
}

Poll filled(Poll poll) {
  auto& [question, options] = poll;
  question = "When?";
  auto& [words, voters] = options.emplace_back();
  words = "Now";
  voters = {filled(Person()), ana, you};
  options.emplace_back();
  return poll;
}

CallRecord filled(CallRecord call) {
  auto& [isVideo, isGroup, isMissed, seconds] = call;
  isVideo = false;
  isGroup = true;
  isMissed = true;
  seconds = 95;
  return call;
}

GroupInvite filled(GroupInvite invite) {
  auto& [groupName, caption] = invite;
  groupName = "Garden";
  caption = "Come in";
  return invite;
}

Product filled(Product product) {
  auto& [title, description, currency, thousandths] = product;
  title = "Lamp";
  description = "It shines";
  currency = "BRL";
  thousandths = 19900;
  return product;
}

BusinessText filled(BusinessText text) {
  auto& [paragraphs, buttons] = text;
  paragraphs = {"Your order", "is here"};
  auto& [words, target] = buttons.emplace_back();
  words = "Call";
  target = "+1";
  return text;
}

DeletedMessage filled(DeletedMessage message) {
  auto& [remover] = message;
  remover = ana;
  return message;
}

WaitingMessage filled(WaitingMessage message) { return message; }

MissingMedia filled(MissingMedia media) {
  auto& [part, seconds, fileName] = media;
  part = MessagePart::voiceMessage;
  seconds = 7;
  fileName = "a.opus";
  return media;
}

Notice filled(Notice notice) {
  auto& [kind, code, actor, targets, parameter, seconds] = notice;
  kind = NoticeKind::memberAdded;
  code = 2;
  actor = you;
  targets = {ana, Person{.jid = "2@lid"}};
  parameter = "X";
  seconds = 86400;
  return notice;
}

UnsupportedMessage filled(UnsupportedMessage message) {
  auto& [type] = message;
  type = 99;
  return message;
}

Quote filled(Quote quote) {
  auto& [stanzaID, sender, part, words] = quote;
  stanzaID = "3EB0";
  sender = ana;
  part = MessagePart::sticker;
  words = "hi";
  return quote;
}

Reaction filled(Reaction reaction) {
  auto& [emoji, person, count, milliseconds] = reaction;
  emoji = "❤️";
  person = ana;
  count = 2;
  milliseconds = 1714640400123;
  return reaction;
}

MessageMarks filled(MessageMarks marks) {
  auto& [isForwarded, isStarred, isViewOnce, isGIF, isRound] = marks;
  isForwarded = isStarred = isViewOnce = isGIF = isRound = true;
  return marks;
}

template <typename Content>
MessageDetails detailsOf() {
  MessageDetails details;
  auto& [content, quote, reactions, marks, heading] = details;
  content = filled(Content());
  quote = filled(Quote());
  reactions = {filled(Reaction()), Reaction()};
  marks = filled(MessageMarks());
  heading = "a.pdf";
  return details;
}

template <typename... Contents>
std::vector<MessageDetails> detailsOfAll(std::type_identity<std::variant<Contents...>>) {
  return {detailsOf<Contents>()...};
}

MessageDetails again(const MessageDetails& details) { return MessageFacts::read(MessageFacts::write(details)); }

struct Case {
  const char* name;
  MessageDetails details;
  const char* text;
};

void PrintTo(const Case& theCase, std::ostream* stream) { *stream << theCase.name; }

class MessageFactsTest : public testing::TestWithParam<Case> {};

TEST_P(MessageFactsTest, HaveOneTextBothWays) {
  EXPECT_EQ(MessageFacts::write(GetParam().details), GetParam().text);
  EXPECT_TRUE(MessageFacts::read(GetParam().text) == GetParam().details);
}

// What an earlier export wrote is read as long as these stay.
const Case wholes[] = {
    {"nothing", {}, ""},
    {"place",
     {.content = filled(SharedLocation())},
     R"({"content":{"address":"São Paulo\n\"Centro\"","at":[-23.5505199,0.1],"kind":"place","live":true,)"
     R"("name":"Praça da Sé"}})"},
    {"contacts",
     {.content = filled(SharedContacts())},
     R"({"content":{"kind":"contacts","people":[)"
     R"({"emails":["z@example.org"],"name":"Zoë","phones":["+1","+2"]},{}]}})"},
    {"link",
     {.content = filled(LinkPreview())},
     R"({"content":{"kind":"link","summary":"An example","title":"Example","url":"https://example.org/"}})"},
    {"poll",
     {.content = filled(Poll())},
     R"({"content":{"kind":"poll","options":[{"voters":[{"jid":"5511900001111@s.whatsapp.net","me":true},)"
     R"({"jid":"1@lid"},{"me":true}],"words":"Now"},{}],"question":"When?"}})"},
    {"call",
     {.content = filled(CallRecord())},
     R"({"content":{"group":true,"kind":"call","missed":true,"seconds":95,"video":false}})"},
    {"invite",
     {.content = filled(GroupInvite())},
     R"({"content":{"caption":"Come in","group":"Garden","kind":"invite"}})"},
    {"product",
     {.content = filled(Product())},
     R"({"content":{"currency":"BRL","description":"It shines","kind":"product","thousandths":19900,"title":"Lamp"}})"},
    {"business",
     {.content = filled(BusinessText())},
     R"({"content":{"buttons":[{"target":"+1","words":"Call"}],"kind":"business",)"
     R"("paragraphs":["Your order","is here"]}})"},
    {"deleted", {.content = filled(DeletedMessage())}, R"({"content":{"by":{"jid":"1@lid"},"kind":"deleted"}})"},
    {"waiting", {.content = WaitingMessage()}, R"({"content":{"kind":"waiting"}})"},
    {"missing",
     {.content = filled(MissingMedia())},
     R"({"content":{"kind":"missing","name":"a.opus","part":"voiceMessage","seconds":7}})"},
    {"notice",
     {.content = filled(Notice())},
     R"({"content":{"actor":{"me":true},"code":2,"kind":"notice","parameter":"X","seconds":86400,)"
     R"("targets":[{"jid":"1@lid"},{"jid":"2@lid"}],"type":"memberAdded"}})"},
    {"unsupported", {.content = filled(UnsupportedMessage())}, R"({"content":{"kind":"unsupported","type":99}})"},
    {"quote",
     {.quote = filled(Quote())},
     R"({"quote":{"id":"3EB0","part":"sticker","sender":{"jid":"1@lid"},"words":"hi"}})"},
    {"reactions",
     {.reactions = {filled(Reaction()), Reaction{.emoji = "👍", .count = 0}}},
     R"({"reactions":[{"count":2,"emoji":"❤️","milliseconds":1714640400123,"person":{"jid":"1@lid"}},)"
     R"({"count":0,"emoji":"👍"}]})"},
    {"marks",
     {.marks = filled(MessageMarks())},
     R"({"marks":{"forwarded":true,"gif":true,"round":true,"starred":true,"viewOnce":true}})"},
    {"heading", {.heading = "a.pdf"}, R"({"heading":"a.pdf"})"},
};

// A member that is absent is another fact than one that is empty, 0 or false.
const Case parts[] = {
    {"placeOfNothing", {.content = SharedLocation()}, R"({"content":{"kind":"place"}})"},
    {"placeAtZero",
     {.content = SharedLocation{.coordinates = Coordinates()}},
     R"({"content":{"at":[0.0,0.0],"kind":"place"}})"},
    {"placeWithoutName", {.content = SharedLocation{.name = ""}}, R"({"content":{"kind":"place","name":""}})"},
    {"placeWithoutAddress", {.content = SharedLocation{.address = ""}}, R"({"content":{"address":"","kind":"place"}})"},
    {"linkTitle", {.content = LinkPreview{.title = ""}}, R"({"content":{"kind":"link","title":""}})"},
    {"linkSummary", {.content = LinkPreview{.summary = ""}}, R"({"content":{"kind":"link","summary":""}})"},
    {"callOfNothing", {.content = CallRecord()}, R"({"content":{"kind":"call"}})"},
    {"callWithVideo", {.content = CallRecord{.isVideo = true}}, R"({"content":{"kind":"call","video":true}})"},
    {"callOfNoTime", {.content = CallRecord{.seconds = 0}}, R"({"content":{"kind":"call","seconds":0}})"},
    {"inviteGroup", {.content = GroupInvite{.groupName = ""}}, R"({"content":{"group":"","kind":"invite"}})"},
    {"inviteCaption", {.content = GroupInvite{.caption = ""}}, R"({"content":{"caption":"","kind":"invite"}})"},
    {"productWords", {.content = Product{.description = ""}}, R"({"content":{"description":"","kind":"product"}})"},
    {"productFree",
     {.content = Product{.currency = "", .thousandths = 0}},
     R"({"content":{"currency":"","kind":"product","thousandths":0}})"},
    {"button",
     {.content = BusinessText{.buttons = {{}, {.target = ""}}}},
     R"({"content":{"buttons":[{},{"target":""}],"kind":"business"}})"},
    {"deletedBySender", {.content = DeletedMessage()}, R"({"content":{"kind":"deleted"}})"},
    {"deletedByYou", {.content = DeletedMessage{you}}, R"({"content":{"by":{"me":true},"kind":"deleted"}})"},
    {"deletedByNobodyKnown", {.content = DeletedMessage{Person()}}, R"({"content":{"by":{},"kind":"deleted"}})"},
    {"missingPhoto", {.content = MissingMedia()}, R"({"content":{"kind":"missing"}})"},
    {"missingText",
     {.content = MissingMedia{.part = MessagePart::text, .seconds = 0, .fileName = ""}},
     R"({"content":{"kind":"missing","name":"","part":"text","seconds":0}})"},
    {"noticeOfNothing", {.content = Notice()}, R"({"content":{"kind":"notice"}})"},
    {"noticeOfTimerOff",
     {.content = Notice{.kind = NoticeKind::timerSet, .actor = Person(), .parameter = "", .seconds = 0}},
     R"({"content":{"actor":{},"kind":"notice","parameter":"","seconds":0,"type":"timerSet"}})"},
    {"unsupportedOfNoType", {.content = UnsupportedMessage()}, R"({"content":{"kind":"unsupported"}})"},
    {"quoteOfNothing", {.quote = Quote()}, R"({"quote":{}})"},
    {"quoteID", {.quote = Quote{.stanzaID = "A"}}, R"({"quote":{"id":"A"}})"},
    {"quoteSender", {.quote = Quote{.sender = you}}, R"({"quote":{"sender":{"me":true}}})"},
    {"quotePart", {.quote = Quote{.part = MessagePart::photo}}, R"({"quote":{"part":"photo"}})"},
    {"quoteWords", {.quote = Quote{.words = ""}}, R"({"quote":{"words":""}})"},
    {"reactionCounted", {.reactions = {{.emoji = "👍", .count = 12}}}, R"({"reactions":[{"count":12,"emoji":"👍"}]})"},
    {"reactionOfSomebody",
     {.reactions = {{.emoji = "👍", .person = you}}},
     R"({"reactions":[{"emoji":"👍","person":{"me":true}}]})"},
    {"forwarded", {.marks = {.isForwarded = true}}, R"({"marks":{"forwarded":true}})"},
    {"starred", {.marks = {.isStarred = true}}, R"({"marks":{"starred":true}})"},
    {"viewOnce", {.marks = {.isViewOnce = true}}, R"({"marks":{"viewOnce":true}})"},
    {"gif", {.marks = {.isGIF = true}}, R"({"marks":{"gif":true}})"},
    {"round", {.marks = {.isRound = true}}, R"({"marks":{"round":true}})"},
    {"headingOfNothing", {.heading = ""}, R"({"heading":""})"},
};

std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Wholes, MessageFactsTest, testing::ValuesIn(wholes), nameOf);
INSTANTIATE_TEST_SUITE_P(Parts, MessageFactsTest, testing::ValuesIn(parts), nameOf);

TEST(MessageFactsAll, SurviveWithEveryMemberOfEveryContent) {
  std::set<std::string> texts;
  const auto all = detailsOfAll(std::type_identity<MessageContent>());
  for (const MessageDetails& details : all) {
    EXPECT_TRUE(again(details) == details) << MessageFacts::write(details);
    texts.insert(MessageFacts::write(details));
  }
  EXPECT_EQ(texts.size(), std::variant_size_v<MessageContent>);
}

TEST(MessageFactsAll, SurviveForEveryEnumeratedValue) {
  for (const auto& [part, raw] : rawValueTable(MessagePart())) {
    const MessageDetails details{.content = MissingMedia{.part = part}, .quote = Quote{.part = part}};
    EXPECT_TRUE(again(details) == details) << raw;
  }
  for (const auto& [kind, raw] : rawValueTable(NoticeKind())) {
    const MessageDetails details{.content = Notice{.kind = kind}};
    EXPECT_TRUE(again(details) == details) << raw;
  }
}

TEST(MessageFactsNumbers, KeepAllTheirBits) {
  for (const std::int64_t number : {least, least + 1, std::int64_t{-1}, (std::int64_t{1} << 53) + 1, most - 1, most}) {
    const MessageDetails details{.content = CallRecord{.seconds = number},
                                 .reactions = {{.count = number, .milliseconds = number}}};
    EXPECT_TRUE(again(details) == details) << number;
  }
}

TEST(MessageFactsNumbers, KeepTheExactPlace) {
  constexpr double real[] = {0.1 + 0.2,
                             -23.550519942283630,
                             180,
                             -0.0,
                             5e-324,
                             1.0 / 3,
                             1e22,
                             std::numeric_limits<double>::max(),
                             std::nextafter(90.0, 0.0)};
  for (const double number : real) {
    const MessageDetails details{.content = SharedLocation{.coordinates = Coordinates{number, -number}}};
    EXPECT_TRUE(again(details) == details) << number;
  }
}

TEST(MessageFactsNumbers, ArePlacesOnlyWhenTheyAreNumbers) {
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double number : {std::numeric_limits<double>::quiet_NaN(), infinite, -infinite}) {
    for (const Coordinates& coordinates : {Coordinates{number, 1}, Coordinates{1, number}}) {
      const MessageDetails details{.content = SharedLocation{.coordinates = coordinates, .name = "Home"}};
      EXPECT_EQ(MessageFacts::write(details), R"({"content":{"kind":"place","name":"Home"}})");
    }
  }
}

TEST(MessageFactsTexts, KeepControlsAndEveryCharacter) {
  const MessageDetails details{.quote = Quote{.words = "\0\x01\t\\/\"\x7F \u2028 \U0001F600 \uFFFD"s},
                               .heading = "</script>"};
  EXPECT_TRUE(again(details) == details);
}

}  // namespace
