#include "TidewellCore/Archive/ChatArchiveJSON.h"

#include <gtest/gtest.h>

#include <limits>

#include "Tests/Support/Failures.h"
#include "Tests/Support/SeededRandom.h"
#include "TidewellCore/TidewellError.h"

namespace {

using namespace std::string_literals;
using ChatArchiveJSON::stringify;

Json object(Json::Object entries) { return {std::move(entries)}; }

TEST(ChatArchiveJSON, WritesCompactlyWithKeysInByteOrder) {
  EXPECT_EQ(
      stringify(object({{"b", std::int64_t{1}}, {"a", Json::Array{true, false, Json(), "x"}}, {"B", object({})}})),
      R"({"B":{},"a":[true,false,null,"x"],"b":1})");
  EXPECT_EQ(stringify(Json(Json::Array{})), "[]");
  EXPECT_EQ(stringify(Json(std::int64_t{-1717243200})), "-1717243200");
  EXPECT_EQ(stringify(Json(1.5)), "1.5");
  EXPECT_EQ(stringify(Json(2500.0)), "2500.0");
  EXPECT_EQ(stringify(Json(-2.5e300)), "-2.5e+300");
  EXPECT_EQ(stringify(Json(std::numeric_limits<double>::infinity())), "null");
}

TEST(ChatArchiveJSON, NothingClosesTheScriptOrBreaksItsLines) {
  EXPECT_EQ(stringify("</script><!--"), R"("\u003c/script>\u003c!--")");
  EXPECT_EQ(stringify("a\u2028b\u2029c"), R"("a\u2028b\u2029c")");
  EXPECT_EQ(stringify("\u2027 \u202A ⁂"), "\"\u2027 \u202A ⁂\"") << "neighbours of the separators stay";
  EXPECT_EQ(stringify(object({{"<k", "v"}})), R"({"\u003ck":"v"})");
}

TEST(ChatArchiveJSON, EscapesWhatJSONAsksFor) {
  EXPECT_EQ(stringify("\"\\\n\r\t\b\f\0\x1F\x7F"s), "\"\\\"\\\\\\n\\r\\t\\u0008\\u000c\\u0000\\u001f\x7F\"");
}

TEST(ChatArchiveJSON, RefusesTextThatIsNotUTF8) {
  EXPECT_THROW(
      try { stringify("\xC3"); } catch (const TidewellError& error) {
        EXPECT_EQ(error, TidewellError::ioFailure("Could not encode Chat Archive data as UTF-8."));
        throw;
      },
      TidewellError);
}

TEST(ChatArchiveJSON, ReadsBackWhatItWrites) {
  Fixture::SeededRandom random(5);
  for (int i = 0; i < 300; ++i) {
    std::u32string text;
    for (std::size_t length = random.below(12); length > 0; --length) {
      const auto scalar = static_cast<char32_t>(random.below(random.chance(50) ? 0x80 : 0xD800));
      text += scalar;
    }
    std::string utf8;
    for (const char32_t scalar : text) {
      if (scalar < 0x80) {
        utf8 += static_cast<char>(scalar);
      } else if (scalar < 0x800) {
        utf8 += {static_cast<char>(0xC0 | scalar >> 6), static_cast<char>(0x80 | (scalar & 0x3F))};
      } else {
        utf8 += {static_cast<char>(0xE0 | scalar >> 12), static_cast<char>(0x80 | (scalar >> 6 & 0x3F)),
                 static_cast<char>(0x80 | (scalar & 0x3F))};
      }
    }
    const Json value = Json::Array{utf8, std::int64_t{i}};
    EXPECT_EQ(Json::parse(stringify(value))->write(), value.write());
  }
}

TEST(ChatArchiveJSON, AssignsToAMemberOfWindow) {
  EXPECT_EQ(ChatArchiveJSON::assignment("CHATS", Json::Array{}), "window.CHATS = [];\n");
}

TEST(ChatArchiveJSON, FindsAnAssignmentAmongOthers) {
  const std::string text =
      "window.ARCHIVE = {\"title\":\"window.CHATS = [1];\\\"}\"};\nwindow.CHATS = [ {\"a\":\"]\"} ] ;\nrest";
  EXPECT_EQ(ChatArchiveJSON::parseAssignment(text, "CHATS")->write(), R"([{"a":"]"}])");
  EXPECT_EQ(ChatArchiveJSON::remainderAfterAssignment(text, "CHATS"), "rest");
  EXPECT_TRUE(ChatArchiveJSON::remainderAfterAssignment(text, "ARCHIVE").starts_with("window.CHATS = ["));
  EXPECT_EQ(ChatArchiveJSON::parseAssignment(text, "OTHER"), std::nullopt);
}

TEST(ChatArchiveJSON, FindsTheValueAtTheBeginning) {
  EXPECT_EQ(ChatArchiveJSON::extractJSONValue("  {\"a\":\"}\\\"\"}; x"), "{\"a\":\"}\\\"\"}");
  EXPECT_EQ(ChatArchiveJSON::extractJSONValue("[[1],[2]],3"), "[[1],[2]]");
  EXPECT_EQ(ChatArchiveJSON::extractJSONValue("\"a;b\";"), "\"a;b\"");
  EXPECT_EQ(ChatArchiveJSON::extractJSONValue("-12;"), "-12");
}

TEST(ChatArchiveJSON, FindsNothingInATextThatIsCutOrDamaged) {
  for (const char* text : {"", " ", "{\"a\":[1,2}", "[1", "\"a", "\"a\\", "{\"a\":\"b", "]"}) {
    EXPECT_EQ(ChatArchiveJSON::extractJSONValue(text), "") << text;
    EXPECT_EQ(ChatArchiveJSON::parseAssignment("window.A = " + std::string(text), "A"), std::nullopt) << text;
  }
  EXPECT_EQ(ChatArchiveJSON::parseAssignment("var A = 1;", "A"), std::nullopt);
  EXPECT_EQ(ChatArchiveJSON::parseAssignment("window.A {}", "A"), std::nullopt);
}

}  // namespace
