#include "TidewellCore/Platform/Json.h"

#include <gmock/gmock.h>

#include <chrono>

namespace {

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

// The document written compactly; absent when it is refused.
std::optional<std::string> rewritten(std::string_view text) {
  const auto json = Json::parse(text);
  if (!json) return std::nullopt;
  return json->write();
}

TEST(Json, ReadsEveryTypeOfValue) {
  EXPECT_EQ(rewritten("null"), "null");
  EXPECT_EQ(rewritten(" [true, false] "), "[true,false]");
  EXPECT_EQ(rewritten("[1,-2,1.5,1e3]"), "[1,-2,1.5,1000.0]");
  EXPECT_EQ(rewritten(R"({"a":{"b":["c"]}})"), R"({"a":{"b":["c"]}})");
  EXPECT_EQ(rewritten(R"("\u00e9\n\"\ud83c\udf89")"), R"("é\n\"🎉")");
}

TEST(Json, OffersAValueByItsTypeAlone) {
  const auto json = Json::parse("7");
  ASSERT_TRUE(json);
  ASSERT_NE(json->as<std::int64_t>(), nullptr);
  EXPECT_EQ(*json->as<std::int64_t>(), 7);
  EXPECT_EQ(json->as<double>(), nullptr);
  EXPECT_EQ(json->as<std::string>(), nullptr);
  EXPECT_EQ(json->as<bool>(), nullptr);
}

TEST(Json, ReadsTheWholeRangeOfSignedNumbers) {
  EXPECT_EQ(rewritten("[9223372036854775807,-9223372036854775808]"), "[9223372036854775807,-9223372036854775808]");
}

TEST(Json, ANumberBeyondTheSignedRangeNeverChangesItsSign) {
  for (const char* text : {"9223372036854775808", "18446744073709551615", "18446744073709551616"}) {
    const auto json = Json::parse(text);
    ASSERT_TRUE(json) << text;
    ASSERT_NE(json->as<double>(), nullptr) << text;
    EXPECT_GE(*json->as<double>(), 9.2e18) << text;
  }
}

TEST(Json, RefusesWhatIsNoJSON) {
  for (const char* text : {"", " ", "{", "[1,]", "{\"a\"}", "nul", "[1] x", "'a'", "\"\xFF\"", "{1:2}", "NaN"}) {
    EXPECT_EQ(rewritten(text), std::nullopt) << text;
  }
}

TEST(Json, RefusesNestingBeyond64Levels) {
  EXPECT_TRUE(Json::parse(repeated("[", 64) + repeated("]", 64)));
  EXPECT_FALSE(Json::parse(repeated("[", 66) + repeated("]", 66)));
  EXPECT_FALSE(Json::parse(repeated("{\"a\":", 66) + "1" + repeated("}", 66)));
}

TEST(Json, DeepNestingCostsNoStack) {
  EXPECT_FALSE(Json::parse(repeated("[", 1'000'000)));
  EXPECT_FALSE(Json::parse(repeated("[", 1'000'000) + repeated("]", 1'000'000)));
}

TEST(Json, ALongListOfObjectsTakesNoQuadraticTime) {
  std::string text = "[{}";
  for (int i = 1; i < 200'000; ++i) text += R"(,{"a":1})";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(Json::parse(text + "]"));
  const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  EXPECT_LT(seconds, 20) << "it takes a fraction of a second";
}

TEST(Json, WritesKeysInByteOrder) {
  const Json json = Json::Object{{"b", Json(std::int64_t{1})}, {"B", Json()}, {"a", Json(true)}, {"é", Json("x")}};
  EXPECT_EQ(json.write(), R"({"B":null,"a":true,"b":1,"é":"x"})");
}

TEST(Json, WritesALineForEveryEntryWhenIndented) {
  const Json json = Json::Object{{"folders", Json::Object{{"a", Json("b")}}}, {"version", Json(std::int64_t{1})}};
  EXPECT_EQ(json.write(/*indented=*/true), "{\n  \"folders\": {\n    \"a\": \"b\"\n  },\n  \"version\": 1\n}");
}

TEST(Json, EscapesWhatTextNeedsEscaped) {
  EXPECT_EQ(Json("a\"b\\c\n\x01").write(), R"("a\"b\\c\n\u0001")");
  EXPECT_EQ(Json("Zoë 🎉 </script>").write(), "\"Zoë 🎉 </script>\"");
}

TEST(Json, WritesInvalidBytesAsReplacementCharacters) { EXPECT_EQ(Json("a\xFF").write(), "\"a\uFFFD\""); }

TEST(Json, WritesEmptyContainers) {
  EXPECT_EQ(Json(Json::Array{}).write(), "[]");
  EXPECT_EQ(Json(Json::Object{}).write(), "{}");
  EXPECT_EQ(Json().write(), "null");
}

TEST(Json, ReadsWhatItWrites) {
  const std::string text = R"({"a":[1,2.5,"\"",null,true,{"b":[]}],"c":"é"})";
  EXPECT_EQ(rewritten(text), text);
  EXPECT_EQ(rewritten(Json::parse(text)->write(/*indented=*/true)), text);
}

TEST(Json, TheLastOfTwoEqualKeysWins) { EXPECT_EQ(rewritten(R"({"a":1,"a":2})"), R"({"a":2})"); }

}  // namespace
