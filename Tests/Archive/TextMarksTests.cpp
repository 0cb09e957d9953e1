#include "TidewellCore/Archive/TextMarks.h"

#include <gtest/gtest.h>

namespace {

using TextMarks::html;

TEST(TextMarks, MarksBecomeElements) {
  EXPECT_EQ(html("*bold* and _italic_"), "<strong>bold</strong> and <em>italic</em>");
  EXPECT_EQ(html("~gone~ `code`"), "<s>gone</s> <code>code</code>");
  EXPECT_EQ(html("(*bold*)!"), "(<strong>bold</strong>)!");
  EXPECT_EQ(html("*two words*, *é*"), "<strong>two words</strong>, <strong>é</strong>");
}

TEST(TextMarks, MarksStandWithinMarks) {
  EXPECT_EQ(html("*_~all~_*"), "<strong><em><s>all</s></em></strong>");
  EXPECT_EQ(html("*a _b_ c*"), "<strong>a </strong><strong><em>b</em></strong><strong> c</strong>");
  EXPECT_EQ(html("*a _b* c_"), "<strong>a _b</strong> c_") << "what crosses has no partner";
}

TEST(TextMarks, WhatIsNoMarkStaysAsItIsTyped) {
  for (const char* text : {"2 * 3 * 4", "snake_case_name",
                           "a*b*c",     "**",
                           "* *",       "*a",
                           "a*",        "*a\nb*",
                           "`",         "``",
                           "` `",       "~ a~",
                           "-a",        ">a",
                           "1.a",       "1234. a",
                           "- ",        "> ",
                           "->",        "a - b",
                           "10:30",     "*a *",
                           "_a_b"}) {
    std::string expected;
    for (const char c : std::string(text))
      c == '\n' ? expected += "<br>" : c == '>' ? expected += "&gt;" : expected += c;
    EXPECT_EQ(html(text), expected) << text;
  }
  EXPECT_EQ(html(""), "");
}

TEST(TextMarks, CodeKeepsItsCharacters) {
  EXPECT_EQ(html("`*a* _b_`"), "<code>*a* _b_</code>");
  EXPECT_EQ(html("```a\n- b```"), "<code>a<br>- b</code>");
  EXPECT_EQ(html("see\n```\na\n```\nend"), "see<br><br><code>a</code><br><br>end");
  EXPECT_EQ(html("`a\nb`"), "`a<br>b`") << "one backtick does not reach over lines";
  EXPECT_EQ(html("*`a`*"), "<strong><code>a</code></strong>");
}

TEST(TextMarks, LinesQuoteAndList) {
  EXPECT_EQ(html("> *a*"), "<span class=\"quoted\" dir=\"auto\"><strong>a</strong></span>");
  EXPECT_EQ(html("- a\n12. b"),
            "<span class=\"entry\" dir=\"auto\">• a</span><span class=\"entry\" dir=\"auto\">12. b</span>");
  EXPECT_EQ(html("a\n> b\nc\nd"), "a<span class=\"quoted\" dir=\"auto\">b</span>c<br>d");
  EXPECT_EQ(html("a\n\n> b\n"), "a<br><br><span class=\"quoted\" dir=\"auto\">b</span>");
}

TEST(TextMarks, AddressesStayWhole) {
  EXPECT_EQ(html("https://a.example/_b_/*c* _d_"), "https://a.example/_b_/*c* <em>d</em>");
  EXPECT_EQ(html("*see www.a.example/b_c_*"), "<strong>see www.a.example/b_c_</strong>");
}

TEST(TextMarks, WhatPeopleWroteIsEscaped) {
  EXPECT_EQ(html("*<b>* & \"a\""), "<strong>&lt;b&gt;</strong> &amp; &quot;a&quot;");
  EXPECT_EQ(html("> <script>"), "<span class=\"quoted\" dir=\"auto\">&lt;script&gt;</span>");
  EXPECT_EQ(html("`</code><img>`"), "<code>&lt;/code&gt;&lt;img&gt;</code>");
  EXPECT_EQ(html("<span class=\"quoted\">").find(TextMarks::blockStart), std::string::npos);
}

// The work grows with the length.
TEST(TextMarks, LongTextsAreReadOnce) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "*_~`` ```\n> ";
  EXPECT_FALSE(html(text).empty());
  EXPECT_EQ(html(std::string(200'000, '*')), std::string(200'000, '*'));
  EXPECT_EQ(html(std::string(200'001, '`')).size(), 200'001U);
}

}  // namespace
