#include <gtest/gtest.h>

#include <ostream>

#include "TidewellCore/Library/MessageFacts.h"

// Facts as a later version, a damaged file or somebody who means harm would have them.

namespace {

struct Case {
  const char* name;
  MessageDetails details;
  const char* text;
};

void PrintTo(const Case& theCase, std::ostream* stream) { *stream << theCase.name; }

class MessageFactsReadTest : public testing::TestWithParam<Case> {};

TEST_P(MessageFactsReadTest, LeavesOutWhatIsOtherThanItShouldBe) {
  EXPECT_TRUE(MessageFacts::read(GetParam().text) == GetParam().details);
}

const Case odd[] = {
    {"blank", {}, " "},
    {"noJSON", {}, "heading"},
    {"cut", {}, R"({"heading":"a")"},
    {"notUTF8", {}, "{\"heading\":\"\xFF\"}"},
    {"numberTooGreat", {}, R"({"heading":"a","x":1e999})"},
    {"null", {}, "null"},
    {"list", {}, R"([{"heading":"a"}])"},
    {"text", {}, R"("heading")"},
    {"emptyObject", {}, "{}"},
    {"unknownMembers", {.heading = "a"}, R"({"heading":"a","later":{"x":[1]}})"},
    {"twice", {.heading = "b"}, R"({"heading":"a","heading":"b"})"},
    {"everyMemberOfAnotherType",
     {.heading = "a"},
     R"({"content":[],"heading":"a","marks":["gif"],"quote":"x","reactions":{}})"},
    {"nulls", {}, R"({"content":null,"heading":null,"marks":null,"quote":null,"reactions":null})"},
    {"contentOfNoKind", {}, R"({"content":{"question":"x"}})"},
    {"contentOfAnotherKind", {}, R"({"content":{"kind":5}})"},
    {"contentOfALaterKind", {.heading = "a"}, R"({"content":{"kind":"event","title":"x"},"heading":"a"})"},
    {"contentOfTheEmptyKind", {}, R"({"content":{"kind":""}})"},
    {"kindInCapitals", {}, R"({"content":{"kind":"Poll"}})"},
    {"entriesOfAnotherType",
     {.content = Poll{.options = {{.voters = {Person{.jid = "1@lid"}}}, {}}}},
     R"({"content":{"kind":"poll","options":[1,{"voters":["x",{"jid":"1@lid"},null]},{"voters":{}},[]],"question":{}}})"},
    {"textsOfAnotherType",
     {.content = BusinessText{.paragraphs = {"a", "b"}}},
     R"({"content":{"kind":"business","paragraphs":["a",1,"b",null],"buttons":"c"}})"},
    {"personOfAnotherType", {.quote = Quote{.words = "w"}}, R"({"quote":{"sender":"1@lid","words":"w"}})"},
    {"partsOfAPersonOfAnotherType", {.quote = Quote{.sender = Person()}}, R"({"quote":{"sender":{"jid":1,"me":1}}})"},
    {"flagOfAnotherType", {.marks = {.isGIF = true}}, R"({"marks":{"gif":true,"round":1,"starred":"true"}})"},
    {"countOfAnotherType", {.reactions = {{.emoji = "x"}}}, R"({"reactions":[{"count":"2","emoji":"x"}]})"},
    {"realSeconds", {.content = CallRecord()}, R"({"content":{"kind":"call","seconds":1.0}})"},
    {"secondsTooMany", {.content = CallRecord()}, R"({"content":{"kind":"call","seconds":9223372036854775808}})"},
    {"unknownNotice", {.content = Notice{.code = 7}}, R"({"content":{"code":7,"kind":"notice","type":"later"}})"},
    {"unknownPart", {.quote = Quote{.words = "w"}}, R"({"quote":{"part":"hologram","words":"w"}})"},
    {"unknownPartOfAFile", {.content = MissingMedia()}, R"({"content":{"kind":"missing","part":"hologram"}})"},
    {"oneCoordinate", {.content = SharedLocation()}, R"({"content":{"at":[1.5],"kind":"place"}})"},
    {"threeCoordinates", {.content = SharedLocation()}, R"({"content":{"at":[1.5,2.5,3.5],"kind":"place"}})"},
    {"coordinateOfAnotherType", {.content = SharedLocation()}, R"({"content":{"at":[1.5,"2"],"kind":"place"}})"},
    {"noCoordinates", {.content = SharedLocation()}, R"({"content":{"at":null,"kind":"place"}})"},
    {"wholeCoordinates",
     {.content = SharedLocation{.coordinates = Coordinates{-5, 6.5}}},
     R"({"content":{"at":[-5,6.5],"kind":"place"}})"},
};

INSTANTIATE_TEST_SUITE_P(Odd, MessageFactsReadTest, testing::ValuesIn(odd),
                         [](const auto& one) { return std::string(one.param.name); });

TEST(MessageFactsReading, IsNotDeeperThanTheLimit) {
  constexpr int depth = 100'000;
  for (const std::string open : {R"({"quote":)", R"({"content":{"kind":"poll","options":[)", "["}) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += open;
    EXPECT_TRUE(MessageFacts::read(text) == MessageDetails());
  }
  const std::string closed = R"({"heading":"a","x":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
  EXPECT_TRUE(MessageFacts::read(closed) == MessageDetails());
}

TEST(MessageFactsReading, TakesAListOfManyEntries) {
  constexpr std::size_t count = 200'000;
  std::string text = R"({"reactions":[{})";
  for (std::size_t i = 1; i < count; ++i) text += i % 2 == 0 ? ",{}" : ",1";
  EXPECT_EQ(MessageFacts::read(text + "]}").reactions.size(), count / 2);
}

}  // namespace
