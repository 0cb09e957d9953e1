#include "Tidewell/Contents/TypeAhead.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(TypeAhead, FindsTheEntryThatLettersMean) {
  const QStringList phones{"Ana", "bea", "Béa", "Ben's iPhone", "Ana 2", "אנה"};
  struct Case {
    QString typed;
    qsizetype current;
    qsizetype expected;
  };
  const std::vector<Case> cases{
      {"a", -1, 0},
      {"a", 0, 4},
      {"a", 4, 0},
      {"aa", 0, 4},
      {"A", 1, 4},
      {"an", 0, 0},
      {"ana ", 0, 4},
      {"be", 0, 1},
      {"ben", 1, 3},
      {"BEN'S i", 5, 3},
      {"bé", 0, 2},
      {"אנ", 0, 5},
      {"z", 2, -1},
      {"", 2, -1},
      {"b", 3, 1},
      {"b", 1, 2},
      {"ana's iphone", 0, -1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TypeAhead::find(phones, c.typed, c.current), c.expected) << c.typed.toStdString() << " at " << c.current;
  }
  EXPECT_EQ(TypeAhead::find({}, "a", -1), -1);
}

}  // namespace
