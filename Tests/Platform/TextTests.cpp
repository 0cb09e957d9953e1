#include "TidewellCore/Platform/Text.h"

#include <gtest/gtest.h>

namespace {

TEST(Text, TellsValidUTF8) {
  for (const char* text : {"", "plain", "Zoë", "日本", "🎉"}) EXPECT_TRUE(Text::isValid(text)) << text;
  EXPECT_TRUE(Text::isValid(std::string_view("a\0b", 3)));
}

TEST(Text, TellsInvalidUTF8) {
  EXPECT_FALSE(Text::isValid("\x80")) << "a continuation byte alone";
  EXPECT_FALSE(Text::isValid("a\xC3")) << "a cut sequence";
  EXPECT_FALSE(Text::isValid("\xC0\xAF")) << "an overlong sequence";
  EXPECT_FALSE(Text::isValid("\xED\xA0\x80")) << "a surrogate";
  EXPECT_FALSE(Text::isValid("\xF4\x90\x80\x80")) << "beyond U+10FFFF";
}

TEST(Text, RepairsInvalidBytes) {
  EXPECT_EQ(Text::repaired("a\xFF"
                           "b"),
            "a\uFFFD"
            "b");
  EXPECT_EQ(Text::repaired("a\xE2\x82"), "a\uFFFD");
  EXPECT_EQ(Text::repaired("Zoë"), "Zoë");
  EXPECT_TRUE(Text::isValid(Text::repaired("\xED\xA0\x80\xF8\x88")));
}

TEST(Text, TrimsWhiteSpaceAndLineBreaks) {
  EXPECT_EQ(Text::trimmed(" \t\n a b \r\n"), "a b");
  EXPECT_EQ(Text::trimmed("\u00A0\u2003\u2028\u0085x\u3000"), "x");
  EXPECT_EQ(Text::trimmed("  "), "");
  EXPECT_EQ(Text::trimmed(""), "");
  EXPECT_EQ(Text::trimmed("\u200Bx\u200D"), "\u200Bx\u200D") << "joiners are no white space";
}

TEST(Text, NamesHaveTheirBaseLettersInCommon) {
  EXPECT_EQ(Text::baseLetters(" São Paulo "), "sao paulo");
  EXPECT_EQ(Text::baseLetters("SA\u0303O PAULO"), "sao paulo");
  EXPECT_EQ(Text::baseLetters("Łukasz Đỗ"), "lukasz do");
  EXPECT_EQ(Text::baseLetters("Straße"), "strasse");
  EXPECT_EQ(Text::baseLetters("Ana\u200E ❤\uFE0F"), "ana ❤");
  EXPECT_NE(Text::baseLetters("हिन्दी"), Text::baseLetters("हन्द")) << "vowels are no accents";
  EXPECT_EQ(Text::baseLetters("\u200B"), "");
}

TEST(Text, LowersEveryScript) {
  EXPECT_EQ(Text::lowercased("ABCxyz 123"), "abcxyz 123");
  EXPECT_EQ(Text::lowercased("ÀÉÎ ΑΒΓ ЖЩ"), "àéî αβγ жщ");
  EXPECT_EQ(Text::lowercased("I"), "i") << "not the Turkish rule";
}

TEST(Text, ComposesCanonically) {
  EXPECT_EQ(Text::composed("A\u0301"), "Á");
  EXPECT_EQ(Text::composed("\u1112\u1161\u11AB"), "한");
  EXPECT_EQ(Text::composed("ﬁ"), "ﬁ") << "compatibility forms stay";
  EXPECT_EQ(Text::composed("plain"), "plain");
}

TEST(Text, CountsUserPerceivedCharacters) {
  EXPECT_EQ(Text::firstCharacters("abc", 2), "ab");
  EXPECT_EQ(Text::firstCharacters("abc", 3), "abc");
  EXPECT_EQ(Text::firstCharacters("abc", 0), "");
  EXPECT_EQ(Text::firstCharacters("e\u0301e\u0301e\u0301", 2), "e\u0301e\u0301");
  EXPECT_EQ(Text::firstCharacters("👨‍👩‍👧x", 1), "👨‍👩‍👧");
  EXPECT_EQ(Text::firstCharacters("🇧🇷🇵🇹", 1), "🇧🇷");
  EXPECT_EQ(Text::firstCharacters("abe\u0301f", 3), "abe\u0301") << "what comes first may take more than one letter";
  EXPECT_EQ(Text::firstCharacters("abe\u0301f", 4), "abe\u0301f");
  EXPECT_EQ(Text::firstCharacters("ab", 1), "a");
  EXPECT_EQ(Text::firstCharacters("a\r\nb", 2), "a\r\n") << "one character that is two letters";
  EXPECT_EQ(Text::firstCharacters("a\n\rb", 3), "a\n\r");
}

TEST(Text, CutsToBytesBetweenCharacters) {
  EXPECT_EQ(Text::cutToBytes("abc", 3), "abc");
  EXPECT_EQ(Text::cutToBytes("abc", 2), "ab");
  EXPECT_EQ(Text::cutToBytes("日本", 5), "日");
  EXPECT_EQ(Text::cutToBytes("日本", 2), "");
  EXPECT_EQ(Text::cutToBytes("ae\u0301", 3), "a");
}

TEST(Text, CutsThroughACharacterThatIsTooLongByItself) {
  EXPECT_EQ(Text::cutToBytes("e\u0301\u0301\u0301", 6), "e\u0301\u0301");
}

TEST(Text, MeasuresTheColumnsOfATerminal) {
  EXPECT_EQ(Text::displayWidth("abc"), 3u);
  EXPECT_EQ(Text::displayWidth("日本"), 4u);
  EXPECT_EQ(Text::displayWidth("e\u0301"), 1u);
  EXPECT_EQ(Text::displayWidth("a\u200Bb"), 2u);
  EXPECT_EQ(Text::displayWidth(""), 0u);
}

TEST(Text, ScalarsAndTextConvertBothWays) {
  EXPECT_EQ(Text::scalars("aé日🎉"), U"aé日🎉");
  EXPECT_EQ(Text::fromScalars(U"aé日🎉"), "aé日🎉");
  EXPECT_EQ(Text::scalars("a\xFF"), U"a\uFFFD");
  EXPECT_EQ(Text::scalars(""), U"");
}

TEST(Text, ControlsAreCategoryCcAlone) {
  for (const char32_t scalar : {U'\0', U'\n', U'\x1F', U'\x7F', U'\x85', U'\x9F'}) EXPECT_TRUE(Text::isControl(scalar));
  for (const char32_t scalar : {U' ', U'a', U'\u00AD', U'\u200D', U'\u202E', U'\uFEFF'}) {
    EXPECT_FALSE(Text::isControl(scalar)) << static_cast<unsigned>(scalar);
  }
}

TEST(Text, BlanksAreWhiteSpace) {
  for (const char32_t scalar : {U' ', U'\t', U'\n', U'\r', U'\x85', U'\xA0', U'\u2003', U'\u2029', U'\u3000'}) {
    EXPECT_TRUE(Text::isBlank(scalar)) << static_cast<unsigned>(scalar);
  }
  EXPECT_FALSE(Text::isBlank(U'a'));
  EXPECT_FALSE(Text::isBlank(U'\u200D'));
}

TEST(Text, LettersMarksAndNumbersAreAlphanumeric) {
  for (const char32_t scalar : {U'a', U'Z', U'0', U'é', U'日', U'\u0301', U'٣', U'Ⅳ'}) {
    EXPECT_TRUE(Text::isAlphanumeric(scalar)) << static_cast<unsigned>(scalar);
  }
  for (const char32_t scalar : {U'_', U' ', U';', U'"', U'🎉', U'\0', U'\uFFFD'}) {
    EXPECT_FALSE(Text::isAlphanumeric(scalar)) << static_cast<unsigned>(scalar);
  }
}

TEST(Text, ReadsDigitsOfEveryScript) {
  EXPECT_EQ(Text::digitValue(U'7'), 7);
  EXPECT_EQ(Text::digitValue(U'٣'), 3);
  EXPECT_EQ(Text::digitValue(U'९'), 9);
  EXPECT_EQ(Text::digitValue(U'a'), -1);
  EXPECT_EQ(Text::digitValue(U'Ⅳ'), -1);
}

TEST(Text, NameOrderIgnoresLetterCaseAndHeedsAccents) {
  const Text::NameOrder order("en_US");
  EXPECT_EQ(order.compare("ana", "ANA"), 0);
  EXPECT_LT(order.compare("ana", "Bia"), 0);
  EXPECT_GT(order.compare("Bia", "ana"), 0);
  EXPECT_LT(order.compare("ana", "aná"), 0);
  EXPECT_LT(order.compare("aná", "anb"), 0) << "an accent weighs less than a letter";
}

TEST(Text, NameOrderIsNeverThatOfBytes) {
  const Text::NameOrder order("en_US_POSIX");
  EXPECT_EQ(order.compare("Ana", "ana"), 0);
  EXPECT_LT(order.compare("ana", "Team"), 0);
  EXPECT_LT(order.compare("Äpfel", "Zoe"), 0);
}

TEST(Text, NameOrderFollowsTheLocale) {
  EXPECT_LT(Text::NameOrder("de_DE").compare("Österreich", "Zypern"), 0);
  EXPECT_GT(Text::NameOrder("sv_SE").compare("Österreich", "Zypern"), 0);
}

}  // namespace
