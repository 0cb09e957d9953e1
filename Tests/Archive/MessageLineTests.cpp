#include "TidewellCore/Archive/MessageLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TidewellCore/Archive/ChatArchiveJSON.h"

namespace {

using MessageLine::Form;
using testing::HasSubstr;
using testing::Not;

Json::Object object(std::string_view json) { return *Json::parse(json)->as<Json::Object>(); }

std::string line(std::string_view json, Form form = Form::columns) {
  std::string text;
  MessageLine::append(text, object(json), form);
  return text;
}

std::optional<std::string> read(std::string_view line, Form form = Form::columns) {
  const auto message = MessageLine::message(line, form);
  return message ? std::optional(ChatArchiveJSON::stringify(*message)) : std::nullopt;
}

TEST(MessageLine, HasColumnsForWhatIsAskedOfEveryLine) {
  EXPECT_EQ(line(R"({"id":"7","me":false,"sender":"Ana","text":"hi","ts":1678307200})"),
            "\"7\"\t1678307200\t\"hi\"\t{\"me\":false,\"sender\":\"Ana\"}");
  EXPECT_EQ(line(R"({"id":"7","media":{"kind":"photos"}})"), "\"7\"\t\t\t{\"media\":{\"kind\":\"photos\"}}");
  EXPECT_EQ(line("{}"), "\t\t\t{}");
}

TEST(MessageLine, WasTheMessagesJSONBefore) {
  EXPECT_EQ(line(R"({"ts":1,"text":"`$`","id":"7"})", Form::object),
            R"({"id":"7","text":"\u0060\u0024\u0060","ts":1})");
}

TEST(MessageLine, ReadsWhatItWrites) {
  for (const char* json :
       {"{}", R"({"id":"1"})", R"({"id":"\t\"`$<","text":"a\tb\nc\\","ts":-5})", R"({"text":{"no":"text"},"ts":1.5})",
        R"({"id":"1","more":{"id":"2","media":{"path":"x"},"text":"\",\"ts\":9","ts":8},"zzz":["\t",null]})"}) {
    for (const Form form : {Form::object, Form::columns}) {
      EXPECT_EQ(read(line(json, form), form), ChatArchiveJSON::stringify(object(json)));
      EXPECT_THAT(line(json, form), Not(HasSubstr("`")));
      EXPECT_THAT(line(json, form), Not(HasSubstr("$")));
      EXPECT_THAT(line(json, form), Not(HasSubstr("\n")));
    }
  }
}

TEST(MessageLine, ReadsNoLineThatIsCutOrOfAnotherForm) {
  for (const char* text : {"", "\"1\"", "\"1\"\t2\t\"a\"", "\"1\"\t2\t\"a\"\t[]", "1 2\t\t\t{}", "{}"}) {
    EXPECT_EQ(read(text), std::nullopt) << text;
  }
  EXPECT_EQ(read("\"1\"\t2\t\"a\"\t{}", Form::object), std::nullopt);
}

TEST(MessageLine, AnArchiveSaysTheFormOfItsLines) {
  EXPECT_EQ(MessageLine::form({}), Form::object);
  EXPECT_EQ(MessageLine::form({{"format", std::int64_t{2}}}), Form::columns);
  for (const Json& other : {Json(std::int64_t{3}), Json("2"), Json(2.0), Json()}) {
    EXPECT_EQ(MessageLine::form({{"format", other}}), std::nullopt);
  }
}

}  // namespace
