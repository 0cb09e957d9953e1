#include "TidewellCore/Platform/ReadableText.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

TEST(ReadableText, MakesEveryLineBreakOneLineFeed) {
  EXPECT_EQ(ReadableText::cleaned("a\r\nb\rc\nd"), "a\nb\nc\nd");
  EXPECT_EQ(ReadableText::cleaned("\r\r\n\n"), "\n\n\n");
}

TEST(ReadableText, ReplacesControlCharactersButTabs) {
  EXPECT_EQ(ReadableText::cleaned("a\tb\0c\x1B[0m\x7F"s), "a\tb\uFFFDc\uFFFD[0m\uFFFD");
  EXPECT_EQ(ReadableText::cleaned("\u0085 and \u009F"), "\uFFFD and \uFFFD");
}

TEST(ReadableText, KeepsTextWithoutControlCharactersAsItIs) {
  // "Â" and "©" begin with the byte with which the controls from U+0080 begin; the joiner is a format character.
  for (const char* text : {"", "Olá!", "Â ©", "👨‍👩‍👧‍👦", "\u200Fمرحبا", "\u2028"})
    EXPECT_EQ(ReadableText::cleaned(text), text);
}

TEST(ReadableText, FoldsWhiteSpaceOfAnySort) {
  EXPECT_EQ(ReadableText::onOneLine("  a\n\n b\u00A0\u3000c\t"), "a b c");
  EXPECT_EQ(ReadableText::onOneLine(" \n "), "");
}

TEST(ReadableText, EscapesWhatMeansSomethingInHTML) {
  EXPECT_EQ(ReadableText::escapedForHTML(R"(<a href="x">&amp;'</a>)"),
            "&lt;a href=&quot;x&quot;&gt;&amp;amp;'&lt;/a&gt;");
}

}  // namespace
