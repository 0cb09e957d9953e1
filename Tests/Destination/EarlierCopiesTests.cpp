#include "TidewellCore/Destination/EarlierCopies.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "TidewellCore/FileNaming.h"

namespace {

EarlierCopies copiesOf(const std::vector<std::pair<std::string, std::int64_t>>& files) {
  DestinationIndex::Files byKey;
  for (const auto& [name, size] : files) {
    byKey.emplace(FileNaming::normalizedKey(name), DestinationIndex::FileEntry{.name = name, .size = size});
  }
  return EarlierCopies(byKey);
}

TEST(EarlierCopies, AreRecognisedByNameAndSize) {
  EarlierCopies copies = copiesOf({{"a.jpg", 10}, {"A-2.jpg", 20}});
  EXPECT_FALSE(copies.take("a.jpg", 30));
  EXPECT_FALSE(copies.take("b.jpg", 10));
  EXPECT_EQ(copies.take("a.jpg", 20), "A-2.jpg");
  EXPECT_EQ(copies.take("A.JPG", 10), "a.jpg");
}

TEST(EarlierCopies, NoneIsTakenTwice) {
  EarlierCopies copies = copiesOf({{"a.jpg", 10}, {"a-2.jpg", 10}, {"a-10.jpg", 10}, {"a-3.jpg", 10}});
  EXPECT_EQ(copies.take("a-3.jpg", 10), "a-3.jpg") << "under a name of its own";
  for (const char* name : {"a.jpg", "a-2.jpg", "a-10.jpg"}) EXPECT_EQ(copies.take("a.jpg", 10), name);
  EXPECT_FALSE(copies.take("a.jpg", 10));
  EXPECT_FALSE(copies.take("a-2.jpg", 10));
}

TEST(EarlierCopies, AnUnknownSizeMatchesNothing) { EXPECT_FALSE(copiesOf({{"a.jpg", -1}}).take("a.jpg", -1)); }

TEST(EarlierCopies, AVariantIsFoundWhateverItsNumber) {
  EarlierCopies copies = copiesOf({{"a-20000.jpg", 10}, {"a-65.jpg", 10}});
  EXPECT_EQ(copies.take("a.jpg", 10), "a-65.jpg");
  EXPECT_EQ(copies.take("a.jpg", 10), "a-20000.jpg");
}

TEST(EarlierCopies, VariantsOfLongNamesAreFoundAsTheyWereCut) {
  const std::string longest = std::string(251, 'x') + ".jpg";
  std::vector<std::pair<std::string, std::int64_t>> files;
  for (const int number : {1, 2, 10, 100, 1000}) files.emplace_back(FileNaming::variant(longest, number), 10);
  EarlierCopies copies = copiesOf(files);
  for (const auto& [name, size] : files) EXPECT_EQ(copies.take(longest, 10), name);
  EXPECT_FALSE(copies.take(longest, 10));
}

TEST(EarlierCopies, TwentyThousandOfOneNameAreFoundSoon) {
  for (const bool areSizesEqual : {true, false}) {
    std::vector<std::pair<std::string, std::int64_t>> files;
    for (int number = 1; number <= 20'000; ++number) {
      files.emplace_back(FileNaming::variant("a.jpg", number), areSizesEqual ? 10 : number);
    }
    const auto begin = std::chrono::steady_clock::now();
    EarlierCopies copies = copiesOf(files);
    for (const auto& [name, size] : files) ASSERT_EQ(copies.take("a.jpg", size), name);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  }
}

}  // namespace
