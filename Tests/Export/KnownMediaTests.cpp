#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

using ExportPlanner::Fate;
using ExportPlanner::Moved;
using ExportPlanner::PlannedCopy;
using ExportPlanner::Present;
using ExportPlanner::Request;
using ExportPlanner::Restored;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using testing::ElementsAre;
using testing::IsEmpty;

std::string pathOf(const std::string& original, const std::string& jid = ana) {
  return "Message/Media/" + jid + "/a/b/" + original;
}

// Of ten bytes; today's name is of another time zone than the export's files.
Request request(const std::string& original, const std::string& jid = ana) {
  return {.source = "/backup/" + original,
          .relativePath = pathOf(original, jid),
          .chatJID = ExportTest::canonical(jid),
          .sourceSize = 10};
}

Request ofSize(std::int64_t size, Request request) {
  request.sourceSize = size;
  return request;
}

std::vector<std::string> placesOf(const std::vector<PlannedCopy>& copies) {
  std::vector<std::string> places;
  for (const PlannedCopy& copy : copies) places.push_back(copy.dest.relativePath());
  return places;
}

// An export of two chats, and what it remembers.
class KnownMediaTest : public testing::Test {
 protected:
  // A file, and the medium that it is known to be.
  void know(const std::string& path, const std::string& folder, const std::string& name, std::int64_t size = 10) {
    index.addFile(folder, name, size);
    remember(path, folder, name, size);
  }
  void remember(const std::string& path, const std::string& folder, const std::string& name, std::int64_t size = 10) {
    kept.insert_or_assign(path,
                          KeptMedium{.path = path, .place = ExportPlace{.folder = folder, .name = name}, .size = size});
  }
  // A request of which an export would make another name today.
  Request named(const std::string& name, Request request) {
    otherNames.insert_or_assign(request.relativePath, name);
    return request;
  }
  ExportPlan plan() {
    wish.naming = [this](const Request& request) {
      const auto other = otherNames.find(request.relativePath);
      if (other != otherNames.end()) return other->second;
      return "2023-01-02_000000_" + std::string(PathText::lastComponent(request.relativePath));
    };
    return ExportPlan::make(wish, {.index = index, .remembered = remembered, .known = known},
                            ExportTest::snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, {{anaLID, ana}}));
  }
  // The only copy of that plan.
  PlannedCopy copyOf(const Request& request) {
    wish.requests = {request};
    return plan().copies.at(0);
  }

  DestinationIndex index{.destination = "/out/messages"};
  FolderAssignment remembered{{ana, "Ana"}, {bea, "Bea"}};
  std::map<std::string, KeptMedium, std::less<>> kept;
  KnownMedia known = [this](std::string_view path) {
    const auto found = kept.find(path);
    return found == kept.end() ? nullptr : &found->second;
  };
  ExportPlan::Wish wish;
  std::map<std::string, std::string> otherNames;  // by path on the phone
};

TEST_F(KnownMediaTest, IsThereUnderAnotherName) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  const PlannedCopy copy = copyOf(request("x.jpg"));
  EXPECT_EQ(copy.fate, Fate(Present()));
  EXPECT_EQ(copy.dest, (ExportPlace{.folder = "Ana", .name = "2023-01-01_210000_x.jpg"}));
}

TEST_F(KnownMediaTest, IsCopiedAgainWhenItsFileIsGone) {
  remember(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  EXPECT_EQ(copyOf(request("x.jpg")).fate, Fate(Restored()));
}

TEST_F(KnownMediaTest, IsCopiedAgainWhenItsFileHasAnotherSize) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  index.addFile("Ana", "2023-01-01_210000_x.jpg", 9);
  EXPECT_EQ(copyOf(request("x.jpg")).fate, Fate(Restored()));
}

TEST_F(KnownMediaTest, IsCopiedAgainWhenItGotAnotherSizeOnThePhone) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  EXPECT_EQ(copyOf(ofSize(11, request("x.jpg"))).fate, Fate(Restored()));
}

TEST_F(KnownMediaTest, IsFoundByItsNameWhereItsFileIsGone) {
  remember(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  index.addFile("Ana", "2023-01-02_000000_x.jpg", 10);
  const PlannedCopy copy = copyOf(request("x.jpg"));
  EXPECT_EQ(copy.fate, Fate(Present()));
  EXPECT_EQ(copy.dest.name, "2023-01-02_000000_x.jpg");
}

TEST_F(KnownMediaTest, IsThereWhenTheBackupLostIt) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  const PlannedCopy copy = copyOf(ofSize(-1, request("x.jpg")));
  EXPECT_EQ(copy.fate, Fate(Present()));
  EXPECT_EQ(copy.sourceSize, 10);
}

TEST_F(KnownMediaTest, AnEmptyFileThatIsKnownIsNoRestOfAPowerCut) {
  know(pathOf("x.txt"), "Ana", "2023-01-01_210000_x.txt", 0);
  wish.requests = {ofSize(0, request("x.txt")), named("2023-01-01_210000_x.txt", request("y.txt"))};
  EXPECT_THAT(placesOf(plan().copies), ElementsAre("Ana/2023-01-01_210000_x.txt", "Ana/2023-01-01_210000_x-2.txt"));
}

TEST_F(KnownMediaTest, MovesOutOfTheChatsFormerFolderUnderItsName) {
  know(pathOf("x.jpg"), "Old", "2023-01-01_210000_x.jpg");
  remembered.emplace(anaLID, "Old");
  const PlannedCopy copy = copyOf(request("x.jpg"));
  EXPECT_EQ(copy.fate, Fate(Moved{.from = {.folder = "Old", .name = "2023-01-01_210000_x.jpg"}}));
  EXPECT_EQ(copy.dest, (ExportPlace{.folder = "Ana", .name = "2023-01-01_210000_x.jpg"}));
}

TEST_F(KnownMediaTest, MovesUnderAVariantOfItsNameWhereThatIsTaken) {
  know(pathOf("x.jpg"), "Old", "2023-01-01_210000_x.jpg");
  index.addFile("Ana", "2023-01-01_210000_X.JPG", 3);
  remembered.emplace(anaLID, "Old");
  EXPECT_EQ(copyOf(request("x.jpg")).dest, (ExportPlace{.folder = "Ana", .name = "2023-01-01_210000_x-2.jpg"}));
}

TEST_F(KnownMediaTest, MovesOutOfAFolderThatIsRememberedForItsChatAndAnothersNow) {
  know(pathOf("x.jpg", bea), "Ana", "2023-01-01_210000_x.jpg");
  remembered[bea] = "Ana";
  wish.requests = {request("y.jpg", ana), request("x.jpg", bea)};
  const ExportPlan made = plan();
  EXPECT_EQ(made.copies[1].fate, Fate(Moved{.from = {.folder = "Ana", .name = "2023-01-01_210000_x.jpg"}}));
  EXPECT_EQ(made.copies[1].dest.folder, "Bea");
}

TEST_F(KnownMediaTest, StaysInAFolderThatWasNeverItsChats) {
  know(pathOf("x.jpg"), "Bea", "2023-01-01_210000_x.jpg");
  const PlannedCopy copy = copyOf(request("x.jpg"));
  EXPECT_EQ(copy.fate, Fate(Present()));
  EXPECT_EQ(copy.dest, (ExportPlace{.folder = "Bea", .name = "2023-01-01_210000_x.jpg"}));
}

TEST_F(KnownMediaTest, KeepsItsFileFromOneThatIsCalledSoToday) {
  know(pathOf("x.jpg"), "Ana", "2023-01-02_000000_y.jpg");
  wish.requests = {request("y.jpg"), request("x.jpg")};
  const ExportPlan made = plan();
  EXPECT_EQ(made.copies[0].fate, Fate(Restored()));
  EXPECT_EQ(made.copies[1].fate, Fate(Present()));
  EXPECT_THAT(placesOf(made.copies), ElementsAre("Ana/2023-01-02_000000_y-2.jpg", "Ana/2023-01-02_000000_y.jpg"));
}

TEST_F(KnownMediaTest, KeepsItsFileInAFormerFolderFromOneThatIsCalledSoToday) {
  know(pathOf("x.jpg"), "Old", "2023-01-02_000000_y.jpg");
  remembered.emplace(anaLID, "Old");
  wish.requests = {request("y.jpg"), request("x.jpg")};
  const ExportPlan made = plan();
  EXPECT_EQ(made.copies[0].fate, Fate(Restored()));
  EXPECT_EQ(made.copies[1].fate, Fate(Moved{.from = {.folder = "Old", .name = "2023-01-02_000000_y.jpg"}}));
}

TEST_F(KnownMediaTest, AFileOfAMediumThatNobodyAsksForIsFoundByItsName) {
  know(pathOf("y.jpg", anaLID), "Ana", "2023-01-02_000000_y.jpg");
  EXPECT_EQ(copyOf(request("y.jpg")).fate, Fate(Present())) << "its path may be another since";
}

// A clean-up keeps one of two files with the same bytes.
TEST_F(KnownMediaTest, AFileThatTwoMediaAreKnownToBeIsThereForBoth) {
  know(pathOf("x.jpg"), "Ana", "2023-01-02_000000_z.jpg");
  remember(pathOf("y.jpg"), "ANA", "2023-01-02_000000_Z.jpg");
  wish.requests = {request("z.jpg"), request("x.jpg"), request("y.jpg"), request("y.jpg")};
  const ExportPlan made = plan();
  EXPECT_EQ(made.copies[0].fate, Fate(Restored())) << "nobody knows it to be this one";
  EXPECT_EQ(made.copies[1].fate, Fate(Present()));
  EXPECT_EQ(made.copies[2].fate, Fate(Present()));
  EXPECT_EQ(made.copies[2].dest, made.copies[1].dest);
  EXPECT_EQ(made.copies[3].fate, Fate(Restored()));
}

TEST_F(KnownMediaTest, AFileThatTwoMediaAreKnownToBeMovesOnce) {
  know(pathOf("x.jpg"), "Old", "2023-01-01_210000_x.jpg");
  remember(pathOf("y.jpg"), "Old", "2023-01-01_210000_x.jpg");
  remembered.emplace(anaLID, "Old");
  wish.requests = {request("x.jpg"), request("y.jpg")};
  const ExportPlan made = plan();
  const ExportPlace before{.folder = "Old", .name = "2023-01-01_210000_x.jpg"};
  EXPECT_EQ(made.copies[0].fate, Fate(Moved{.from = before}));
  EXPECT_EQ(made.copies[1].fate, Fate(Present()));
  EXPECT_EQ(made.copies[1].dest, before);
}

TEST_F(KnownMediaTest, OfTwoOfOnePathTheOneWithTheKnownSizeIsThere) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  wish.requests = {ofSize(-1, request("x.jpg")), ofSize(11, request("x.jpg")), request("x.jpg"), request("x.jpg")};
  std::vector<Fate> fates;
  for (const PlannedCopy& copy : plan().copies) fates.push_back(copy.fate);
  EXPECT_THAT(fates, ElementsAre(ExportPlanner::Lost(), Restored(), Present(), Restored()));
}

TEST_F(KnownMediaTest, IsKnownByTheKeysOfItsFoldersAndItsOwnName) {
  index.addFile("Ana", "2023-01-01_210000_caf\u00e9.jpg", 10);
  remember(pathOf("x.jpg"), "ANA", "2023-01-01_210000_CAFE\u0301.JPG");
  const PlannedCopy copy = copyOf(request("x.jpg"));
  EXPECT_EQ(copy.fate, Fate(Present()));
  EXPECT_EQ(copy.dest, (ExportPlace{.folder = "Ana", .name = "2023-01-01_210000_caf\u00e9.jpg"}))
      << "as it is spelt on disk";
}

TEST_F(KnownMediaTest, StaysLinkedWhenItsKindIsLeftOut) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  know(pathOf("y.jpg"), "Old", "2023-01-01_210000_y.jpg");
  know(pathOf("z.jpg"), "Bea", "2023-01-01_210000_z.jpg");
  remembered.emplace(anaLID, "Old");
  wish.leftOut = {ofSize(11, request("x.jpg")), request("y.jpg"), ofSize(-1, request("z.jpg"))};
  const ExportPlan made = plan();
  EXPECT_THAT(placesOf(made.earlier),
              ElementsAre("Ana/2023-01-01_210000_x.jpg", "Old/2023-01-01_210000_y.jpg", "Bea/2023-01-01_210000_z.jpg"));
  for (const PlannedCopy& copy : made.earlier) EXPECT_TRUE(copy.alreadyPresent());
}

TEST_F(KnownMediaTest, StaysLinkedWhenThePhoneLostIt) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg", 12);
  know(pathOf("y.jpg"), "Bea", "2023-01-01_210000_y.jpg");
  wish.jidsOfTranscripts = {ExportTest::canonical(ana)};
  wish.lost = {ofSize(-1, request("x.jpg")), ofSize(-1, request("y.jpg"))};
  const ExportPlan made = plan();
  EXPECT_THAT(placesOf(made.earlier), ElementsAre("Ana/2023-01-01_210000_x.jpg", "Bea/2023-01-01_210000_y.jpg"));
  EXPECT_EQ(made.earlier.at(0).sourceSize, 12);
}

TEST_F(KnownMediaTest, WhatIsLinkedIsNotTakenByOneThatIsCalledSoToday) {
  know(pathOf("out.jpg"), "Ana", "2023-01-02_000000_a.jpg");
  know(pathOf("lost.jpg"), "Ana", "2023-01-02_000000_b.jpg");
  know(pathOf("wanted.jpg"), "Ana", "2023-01-02_000000_c.jpg");
  wish.requests = {request("a.jpg"), request("b.jpg"), request("wanted.jpg")};
  wish.leftOut = {request("c.jpg"), request("out.jpg")};
  wish.lost = {ofSize(-1, request("c2.jpg")), ofSize(-1, request("lost.jpg"))};
  otherNames.insert_or_assign(wish.lost[0].relativePath, "2023-01-02_000000_b.jpg");
  const ExportPlan made = plan();
  EXPECT_THAT(placesOf(made.copies), ElementsAre("Ana/2023-01-02_000000_a-2.jpg", "Ana/2023-01-02_000000_b-2.jpg",
                                                 "Ana/2023-01-02_000000_c.jpg"));
  EXPECT_THAT(placesOf(made.earlier), ElementsAre("Ana/2023-01-02_000000_a.jpg", "Ana/2023-01-02_000000_b.jpg"));
}

// A file that the backup lists and does not hold whole is asked for twice.
TEST_F(KnownMediaTest, WhatIsThereIsNotLookedForAsLost) {
  know(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  index.addFile("Ana", "2023-01-02_000000_x.jpg", 20);
  wish.requests = {ofSize(-1, request("x.jpg"))};
  wish.lost = wish.requests;
  const ExportPlan made = plan();
  EXPECT_THAT(placesOf(made.copies), ElementsAre("Ana/2023-01-01_210000_x.jpg"));
  EXPECT_THAT(made.earlier, IsEmpty());
}

TEST_F(KnownMediaTest, ALostOneWhoseFileIsGoneIsFoundByItsName) {
  remember(pathOf("x.jpg"), "Ana", "2023-01-01_210000_x.jpg");
  index.addFile("Ana", "2023-01-02_000000_x.jpg", 20);
  wish.jidsOfTranscripts = {ExportTest::canonical(ana)};
  wish.lost = {ofSize(-1, request("x.jpg"))};
  EXPECT_THAT(placesOf(plan().earlier), ElementsAre("Ana/2023-01-02_000000_x.jpg"));
}

TEST_F(KnownMediaTest, APlaceThatIsNoneLeadsNowhere) {
  index.addFile("Ana", "2023-01-01_210000_x.jpg", 10);
  const std::vector<ExportPlace> places{
      {},
      {.folder = "Ana"},
      {.name = "2023-01-01_210000_x.jpg"},
      {.folder = "..", .name = "2023-01-01_210000_x.jpg"},
      {.folder = ".", .name = "Ana/2023-01-01_210000_x.jpg"},
      {.folder = "Ana/", .name = "2023-01-01_210000_x.jpg"},
      {.folder = "Bea/../Ana", .name = "2023-01-01_210000_x.jpg"},
      {.folder = "Ana", .name = "../Ana/2023-01-01_210000_x.jpg"},
      {.folder = "Ana", .name = "./2023-01-01_210000_x.jpg"},
      {.folder = "/out/messages/Ana", .name = "2023-01-01_210000_x.jpg"},
      {.folder = "Ana", .name = std::string("2023-01-01_210000_x.jpg\0", 24)},
  };
  for (const ExportPlace& place : places) {
    remember(pathOf("x.jpg"), place.folder, place.name);
    const PlannedCopy copy = copyOf(request("x.jpg"));
    EXPECT_EQ(copy.fate, Fate(Restored())) << place.relativePath();
    EXPECT_EQ(copy.dest, (ExportPlace{.folder = "Ana", .name = "2023-01-02_000000_x.jpg"}));
  }
}

TEST_F(KnownMediaTest, AChatsTranscriptIsNoMedium) {
  know(pathOf("x.jpg"), "Ana", FolderNames::textTranscript);
  EXPECT_EQ(copyOf(request("x.jpg")).fate, Fate(Restored()));
}

TEST_F(KnownMediaTest, AFolderIsFoundByWhatIsKnownToBeInIt) {
  know(pathOf("x.jpg"), "Ana before she married", "2023-01-01_210000_x.jpg");
  remembered.clear();
  const PlannedCopy copy = copyOf(request("x.jpg"));
  EXPECT_EQ(copy.fate, Fate(Present()));
  EXPECT_EQ(plan().chats.at(0).folder, "Ana before she married");
}

TEST_F(KnownMediaTest, AnotherZoneAndLanguageCopyNothingAgain) {
  for (int number = 0; number < 300; ++number) {
    const std::string jid = number % 2 == 0 ? ana : bea;
    const std::string original = std::to_string(number) + ".jpg";
    know(pathOf(original, jid), number % 2 == 0 ? "Ana" : "Bea", "2023-01-01_210000_" + original);
    wish.requests.push_back(named("٢٠٢٣-٠١-٠٢_٠٠٠٠٠٠_" + original, request(original, jid)));
  }
  const ExportPlan made = plan();
  EXPECT_EQ(made.bytesToCopy(), 0);
  for (const PlannedCopy& copy : made.copies) {
    ASSERT_TRUE(copy.alreadyPresent());
    ASSERT_EQ(copy.dest, kept.at(copy.relativePath).place);
  }
}

}  // namespace
