#include "TidewellCore/PortableNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TidewellCore/FileNaming.h"

namespace {

using PortableNames::portable;

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

TEST(PortableNames, WhatFATRefusesBecomesADash) {
  EXPECT_EQ(portable("Pizza?"), "Pizza-");
  EXPECT_EQ(portable("a?b*c\"d<e>f|g:h\\i"), "a-b-c-d-e-f-g-h-i");
  EXPECT_EQ(portable("a\tb\x7F"
                     "c\u0085"
                     "d\uFFFEe\uFFFFf\U0001FFFEg\uFDD0h"),
            "a-b-c-d-e-f-g-h");
  EXPECT_EQ(portable("???"), "---");
}

TEST(PortableNames, BlanksAndDotsAtTheEndGo) {
  EXPECT_EQ(portable("Ana . .. "), "Ana");
  EXPECT_EQ(portable("Ana.\u00A0\u3000."), "Ana");
  EXPECT_EQ(portable(" .Ana"), " .Ana");
  EXPECT_EQ(portable("photo.jpg."), "photo.jpg");
  EXPECT_EQ(portable(". ."), "-");
  EXPECT_EQ(portable(""), "-");
}

TEST(PortableNames, ADevicesNameIsMarked) {
  EXPECT_EQ(portable("CON"), "CON-");
  EXPECT_EQ(portable("nul.txt"), "nul-.txt");
  EXPECT_EQ(portable("Com1.tar.gz"), "Com1-.tar.gz");
  EXPECT_EQ(portable("LPT² .x"), "LPT² -.x");
  EXPECT_EQ(portable("conin$"), "conin$-");
  EXPECT_EQ(portable("aux ."), "aux-");
  for (const char* name : {"Console", "com", "com10", "a.con", "con-1", "connie.jpg"}) EXPECT_EQ(portable(name), name);
}

TEST(PortableNames, OrdinaryNamesStayAsTheyAre) {
  for (const std::string& name :
       std::vector<std::string>{"2023-04-05_142233_IMG-20230405-WA0007.jpg", "Zoë & Şule 🎉",
                                "5511900001111-1500000000@g.us", "a.tar.gz", repeated("日", 85)}) {
    EXPECT_EQ(portable(name), name);
  }
}

TEST(PortableNames, APortableNameAndItsVariantsStayPortable) {
  for (const std::string& name :
       std::vector<std::string>{"Pizza?", "CON", "com?", "COM1", "a. . .", "nul.tar.gz", "x." + repeated("y. ", 84),
                                repeated("a", 253) + "?.", repeated("日", 84) + "? ", "a." + repeated("? ", 126),
                                "con." + repeated("x", 251), repeated(" ", 255), "\xFF\xFE"}) {
    const std::string once = portable(name);
    EXPECT_EQ(portable(once), once);
    EXPECT_LE(once.size(), FileNaming::maximumNameBytes);
    for (const int number : {2, 10, 123'456}) {
      const std::string variant = FileNaming::variant(once, number);
      EXPECT_EQ(portable(variant), variant) << name;
    }
  }
}

TEST(PortableNames, AStampIsKept) {
  EXPECT_TRUE(FileNaming::hasExportStamp(portable("2023-04-05_142233_what?.jpg")));
  EXPECT_TRUE(FileNaming::hasExportStamp(portable("undated_what?.jpg")));
}

TEST(PortableNames, OnlyThePortableFormChangesAName) {
  EXPECT_EQ(PortableNames::inForm("Pizza?", NameForm::plain), "Pizza?");
  EXPECT_EQ(PortableNames::inForm("Pizza?", NameForm::portable), "Pizza-");
}

}  // namespace
