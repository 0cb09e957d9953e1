#include "TidewellCore/CleanUp/MergeJournal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

struct MergeJournalTest : testing::Test {
  void write(const char* file) const { Fixture::writeFile(root / file, "x"); }

  Fixture::TemporaryDirectory root;
  MergeJournal journal{root.path()};
};

TEST_F(MergeJournalTest, KnowsWhereSomethingWentOnceItHasGone) {
  journal.addFile("A/a", "B/b");
  EXPECT_EQ(journal.newPlaceOfFile("A/a"), std::nullopt) << "it is nowhere";
  write("A/a");
  EXPECT_EQ(journal.newPlaceOfFile("A/a"), std::nullopt) << "it is still there";
  write("B/b");
  EXPECT_EQ(journal.newPlaceOfFile("A/a"), std::nullopt) << "both are there";
  std::filesystem::remove(root / "A/a");
  EXPECT_EQ(journal.newPlaceOfFile("A/a"), "B/b");
  EXPECT_EQ(journal.newPlaceOfFile("a/A"), "B/b") << "by the key of its name";
  EXPECT_EQ(journal.newPlaceOfFile("A/b"), std::nullopt);
  EXPECT_EQ(journal.newPlaceOfFolder("A/a"), std::nullopt);
}

TEST_F(MergeJournalTest, FollowsWhatWentOnFromThere) {
  journal.addFolder("A", "B");
  journal.addFolder("B", "C");
  write("C/x");
  EXPECT_EQ(journal.newPlaceOfFolder("A"), "C");
  EXPECT_EQ(journal.newPlaceOfFolder("B"), "C");
}

TEST_F(MergeJournalTest, EndsWhenPlacesLeadInACircle) {
  journal.addFile("A/a", "B/b");
  journal.addFile("B/b", "A/a");
  EXPECT_EQ(journal.newPlaceOfFile("A/a"), std::nullopt);
}

TEST_F(MergeJournalTest, IsFoundAgain) {
  EXPECT_TRUE(journal.isEmpty());
  journal.addFile("A/“a”", "B/b");
  journal.addFolder("A", "B");
  journal.save();
  write("B/b");
  const MergeJournal found(root.path());
  EXPECT_EQ(found.newPlaceOfFile("A/“a”"), "B/b");
  EXPECT_EQ(found.newPlaceOfFolder("A"), "B");
  found.remove();
  EXPECT_TRUE(MergeJournal(root.path()).isEmpty());
}

}  // namespace
