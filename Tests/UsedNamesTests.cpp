#include "TidewellCore/UsedNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/NameFamily.h"

namespace {

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

// What `uniquify` promises, variant after variant.
std::string firstFree(const std::string& desired, std::set<std::string>& keys) {
  for (int index = 1;; ++index) {
    std::string candidate = FileNaming::variant(desired, index);
    if (keys.insert(FileNaming::normalizedKey(candidate)).second) return candidate;
  }
}

TEST(UsedNames, GivesTheFirstFreeVariant) {
  UsedNames used({"ana"});
  EXPECT_EQ(used.uniquify("Ana"), "Ana-2");
  EXPECT_EQ(used.uniquify("Ana"), "Ana-3");
  EXPECT_EQ(used.uniquify("Rui"), "Rui");
  EXPECT_TRUE(used.contains("ANA-3"));
  EXPECT_FALSE(used.contains("Ana-4"));
  EXPECT_FALSE(used.take("rui"));
  EXPECT_TRUE(used.take("Rui-2"));
  EXPECT_EQ(used.uniquify("Rui"), "Rui-3");
}

TEST(UsedNames, ComparesByKey) {
  UsedNames used;
  EXPECT_EQ(used.uniquify("A\u0301"), "A\u0301");
  EXPECT_EQ(used.uniquify("Á"), "Á-2");
  EXPECT_EQ(used.uniquify("á.JPG"), "á.JPG");
  EXPECT_EQ(used.uniquify("Á.jpg"), "Á-2.jpg");
}

TEST(UsedNames, ManyNamesOfGreatestLengthStayWithinIt) {
  UsedNames used;
  const std::string longest = repeated("x", 251) + ".jpg";
  std::set<std::string> given;
  for (int count = 1; count <= 120; ++count) given.insert(used.uniquify(longest));
  EXPECT_EQ(given.size(), 120U);
  for (const std::string& name : given) EXPECT_LE(name.size(), FileNaming::maximumNameBytes);
}

// Names whose variants meet each other's, end in letters that change with what follows, or are cut.
const std::vector<std::string>& awkwardNames() {
  static const std::vector<std::string> names{"a.jpg",
                                              "A.JPG",
                                              "a-2.jpg",
                                              "a-2",
                                              "a",
                                              "a.",
                                              "a.-2",
                                              "a-2.",
                                              "a-02.jpg",
                                              ".a",
                                              ".a-2",
                                              "a.b.jpg",
                                              "ΑΣ.jpg",
                                              "ας.jpg",
                                              "ασ.jpg",
                                              "e\u0301.jpg",
                                              "é.jpg",
                                              "İ.jpg",
                                              "-2",
                                              "a-2147483647.jpg",
                                              "a-99999999999.jpg",
                                              "a-",
                                              repeated("x", 251) + ".jpg",
                                              repeated("X", 251) + ".jpg",
                                              repeated("x", 249) + "-2.jpg",
                                              repeated("日", 83) + ".jpg",
                                              repeated("é", 127),
                                              "aa." + repeated("y", 252),
                                              "a." + repeated("日", 84)};
  return names;
}

TEST(UsedNames, GivesWhatTryingEachVariantWould) {
  UsedNames used;
  std::set<std::string> keys;
  for (int round = 0; round < 15; ++round) {
    for (const std::string& name : awkwardNames()) EXPECT_EQ(used.uniquify(name), firstFree(name, keys)) << name;
  }
}

TEST(UsedNames, TwentyThousandOfOneNameAreFoundSoon) {
  UsedNames used;
  const auto begin = std::chrono::steady_clock::now();
  for (int count = 1; count < 20'000; ++count) used.uniquify("photo.jpg");
  EXPECT_EQ(used.uniquify("photo.jpg"), "photo-20000.jpg");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(NameFamily, AVariantReadsAsAMemberOfItsFamily) {
  for (const std::string& name : awkwardNames()) {
    for (const int number : {2, 9, 10, 64, 20'000, 2'147'483'647}) {
      const std::string key = FileNaming::normalizedKey(FileNaming::variant(name, number));
      const NameFamily::Member member{.family = NameFamily::of(name, static_cast<int>(std::to_string(number).size())),
                                      .number = number};
      const auto readings = NameFamily::readings(key);
      EXPECT_NE(std::ranges::find(readings, member), readings.end()) << name << " " << number;
    }
  }
}

TEST(NameFamily, OnlyANumberAsVariantsHaveItIsRead) {
  for (const char* key :
       {"a.jpg", "a-1.jpg", "a-0.jpg", "a-02.jpg", "a-x.jpg", "a-.jpg", "a-2x", "a-2147483648", "", "-"}) {
    EXPECT_TRUE(NameFamily::readings(key).empty()) << key;
  }
  EXPECT_EQ(NameFamily::readings("a-2.-2").size(), 2U);
}

}  // namespace
