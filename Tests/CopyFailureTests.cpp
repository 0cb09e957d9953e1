#include "TidewellCore/CopyFailure.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using CopyFailures::Headline;
using enum FailureReason;

std::vector<CopyFailure> failuresFor(const std::vector<FailureReason>& reasons) {
  std::vector<CopyFailure> failures;
  for (const FailureReason reason : reasons) failures.push_back({.name = "a.jpg", .chat = "Ana", .reason = reason});
  return failures;
}

TEST(CopyFailures, EveryReasonHasWordsOfItsOwn) {
  std::set<std::string_view> sentences;
  for (const FailureReason reason : CopyFailures::allReasons) {
    const auto& [sentence, one, many] = CopyFailures::words(reason);
    EXPECT_TRUE(sentence.ends_with('.')) << sentence;
    EXPECT_TRUE(one.starts_with("1 file ")) << one;
    EXPECT_TRUE(many.starts_with("%lld files ")) << many;
    sentences.insert(sentence);
  }
  EXPECT_EQ(sentences.size(), CopyFailures::allReasons.size());
}

TEST(CopyFailures, WordsBelongToTheirReason) {
  EXPECT_EQ(CopyFailures::words(missing).many, "%lld files are missing from the backup");
  EXPECT_EQ(CopyFailures::words(missing).one, "1 file is missing from the backup");
  EXPECT_EQ(CopyFailures::words(tooLarge).sentence, "It is too large for the drive.");
  EXPECT_EQ(CopyFailures::words(other).sentence, "It could not be copied.");
  EXPECT_STREQ(CopyError(cutShort).what(), "It is cut short in the backup.");
}

TEST(CopyFailures, HeadlineTellsTheMostFrequentReason) {
  EXPECT_EQ(CopyFailures::headline({}), std::nullopt);
  EXPECT_EQ(CopyFailures::headline(failuresFor({other})), (Headline{.reason = other, .count = 1}));
  EXPECT_EQ(CopyFailures::headline(failuresFor({missing, unwritable, cutShort, unwritable})),
            (Headline{.reason = unwritable, .count = 2}));
  EXPECT_EQ(CopyFailures::headline(failuresFor({unwritable, cutShort, cutShort, unwritable})),
            (Headline{.reason = cutShort, .count = 2}));
}

}  // namespace
