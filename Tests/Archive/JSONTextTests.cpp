#include "TidewellCore/Archive/JSONText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> elements(std::string_view array) {
  std::vector<std::string> found;
  JSONText::forEachElement(array, [&](std::string_view element) { found.emplace_back(element); });
  return found;
}

TEST(JSONText, FindsAMemberOfAnObject) {
  const std::string_view object = R"({"a": {"b": 1}, "text": "\"b\": 2", "b" : [3, "}"] , "c":null})";
  EXPECT_EQ(JSONText::member(object, R"("b")"), R"([3, "}"])");
  EXPECT_EQ(JSONText::member(object, R"("a")"), R"({"b": 1})");
  EXPECT_EQ(JSONText::member(object, R"("c")"), "null");
  EXPECT_EQ(JSONText::member(object, R"("d")"), "");
}

TEST(JSONText, FindsNoMemberInWhatIsNoObject) {
  for (const char* text : {"", "[]", "{", R"({"a")", R"({"a" 1})", R"({"b":1 "a":2})", R"({"a":)"}) {
    EXPECT_EQ(JSONText::member(text, R"("a")"), "") << text;
  }
}

TEST(JSONText, VisitsTheElementsOfAnArray) {
  EXPECT_THAT(elements(R"([ {"a":"],["} , [1,2],"x" ])"), ElementsAre(R"({"a":"],["})", "[1,2]", R"("x")"));
  EXPECT_THAT(elements("[]"), IsEmpty());
  EXPECT_THAT(elements("{}"), IsEmpty());
}

TEST(JSONText, StopsAtAnElementThatDoesNotEnd) {
  EXPECT_THAT(elements(R"([1,{"a":2)"), ElementsAre("1"));
  EXPECT_THAT(elements("[1 2]"), ElementsAre("1"));
}

}  // namespace
