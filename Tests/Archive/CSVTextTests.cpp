#include "TidewellCore/Archive/CSVText.h"

#include <gtest/gtest.h>

namespace {

TEST(CSVText, WordsThatBeginAFormulaHaveAnApostropheBeforeThem) {
  const std::vector<std::string> formulas{
      "=1+1", "+351 21 000 0000", "-1", "@SUM(A1)", "\tx", "\rx", "\n=1+1", "'=1+1", "＝1", "＋1", "－1", "＠x"};
  for (const std::string& text : formulas) EXPECT_EQ(CSVText::words(text), "'" + text);
}

TEST(CSVText, OtherWordsStayAsTheyAre) {
  const std::vector<std::string> plain{"", "1+1=2", "a@b.c", "\u2014 yes", " =1", "👍", "don't", "\"=1\"", "…"};
  for (const std::string& text : plain) EXPECT_EQ(CSVText::words(text), text);
}

TEST(CSVText, ARowQuotesOnlyWhatItMust) {
  std::string table;
  CSVText::appendRow(table, {"1", "", "a b;c", "a,b", "\"no\"", "two\nlines", "\r"});
  EXPECT_EQ(table, "1,,a b;c,\"a,b\",\"\"\"no\"\"\",\"two\nlines\",\"\r\"\r\n");
}

}  // namespace
