#include "TidewellCore/Export/ExportPlanner.h"
#include "TidewellCore/Platform/PathText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"

namespace {

using ExportPlanner::Fate;
using ExportPlanner::LeftoverFolders;
using ExportPlanner::PlannedCopy;
using ExportPlanner::Request;
using ExportPlanner::Restored;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::canonical;
using ExportTest::foldersOf;

Request request(const std::string& name, std::int64_t size, const std::string& jid = ana) {
  return {.source = "/backup/" + name,
          .relativePath = "Message/Media/" + jid + "/a/b/" + name,
          .chatJID = canonical(jid),
          .kind = MediaKind::photos,
          .sourceSize = size,
          .date = dateFromUnixTime(5),
          .encryptionKey = Bytes{1, 2}};
}

DestinationIndex indexWith(const std::string& folder, const std::vector<std::pair<std::string, int>>& files) {
  DestinationIndex index{.destination = "/out/messages"};
  for (const auto& [name, size] : files) index.addFile(folder, name, size);
  return index;
}

// Where nothing is known of what earlier exports made.
std::vector<PlannedCopy> planned(std::vector<Request> requests, const ChatFolders& folders,
                                 const LeftoverFolders& leftovers, const DestinationIndex& index,
                                 const CancellationCheck& isCancelled = {}) {
  const KnownMedia nothing;
  std::vector<std::string> names;
  for (const Request& request : requests) names.emplace_back(PathText::lastComponent(request.relativePath));
  return ExportPlanner::plan(
      {.requests = requests, .known = std::vector<std::optional<KnownMedium>>(requests.size()), .names = names},
      {.folders = folders,
       .leftovers = leftovers,
       .remembered = {},
       .index = index,
       .knownFiles = KnownFiles(nothing, index)},
      isCancelled);
}

Fate movedFrom(const std::string& folder, const std::string& name) {
  return ExportPlanner::Moved{.from = {.folder = folder, .name = name}};
}

TEST(ExportPlanner, PlansACopyForEachRequestInTheirOrder) {
  DestinationIndex index{.destination = "/out/messages"};
  const std::vector<Request> requests{request("b.jpg", 1), request("a.jpg", 2, bea)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}, {bea, "Bea"}}), {}, index);
  ASSERT_EQ(plan.size(), 2U);
  EXPECT_EQ(plan[0], (PlannedCopy{.source = "/backup/b.jpg",
                                  .dest = {.folder = "Ana", .name = "b.jpg"},
                                  .date = dateFromUnixTime(5),
                                  .relativePath = "Message/Media/" + ana + "/a/b/b.jpg",
                                  .desiredName = "b.jpg",
                                  .chatJID = canonical(ana),
                                  .kind = MediaKind::photos,
                                  .sourceSize = 1,
                                  .encryptionKey = Bytes{1, 2}}));
  EXPECT_EQ(plan[1].dest, (ExportPlace{.folder = "Bea", .name = "a.jpg"}));
}

TEST(ExportPlanner, AFileOfThatNameAndSizeIsThereAlready) {
  DestinationIndex index = indexWith("Ana", {{"2023-01-01_101010_a.jpg", 10}});
  const auto plan = planned({request("2023-01-01_101010_a.jpg", 10)}, foldersOf({{ana, "Ana"}}), {}, index);
  EXPECT_TRUE(plan[0].alreadyPresent());
  EXPECT_EQ(plan[0].dest.name, "2023-01-01_101010_a.jpg");
}

TEST(ExportPlanner, AFileOfThatNameAndAnotherSizeIsKeptBesideTheNewCopy) {
  DestinationIndex index = indexWith("Ana", {{"2023-01-01_101010_a.jpg", 11}});
  const auto plan = planned({request("2023-01-01_101010_a.jpg", 10)}, foldersOf({{ana, "Ana"}}), {}, index);
  EXPECT_FALSE(plan[0].alreadyPresent());
  EXPECT_EQ(plan[0].dest, (ExportPlace{.folder = "Ana", .name = "2023-01-01_101010_a-2.jpg"}));
}

TEST(ExportPlanner, OfTwoEqualRequestsOnlyOneCanBeThereAlready) {
  DestinationIndex index = indexWith("Ana", {{"a.jpg", 10}});
  const std::vector<Request> requests{request("a.jpg", 10), request("a.jpg", 10), request("A.jpg", 10)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}}), {}, index);
  EXPECT_TRUE(plan[0].alreadyPresent());
  EXPECT_FALSE(plan[1].alreadyPresent());
  EXPECT_EQ(plan[1].dest.name, "a-2.jpg");
  EXPECT_FALSE(plan[2].alreadyPresent());
  EXPECT_EQ(plan[2].dest.name, "A-3.jpg");
}

TEST(ExportPlanner, NamesAreUniqueWithinAFolderOnly) {
  DestinationIndex index{.destination = "/out/messages"};
  const std::vector<Request> requests{request("a.jpg", 1), request("a.jpg", 1, bea)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}, {bea, "Bea"}}), {}, index);
  EXPECT_EQ(plan[1].dest, (ExportPlace{.folder = "Bea", .name = "a.jpg"}));
}

TEST(ExportPlanner, AnUnknownSizeIsNeverThereAlready) {
  DestinationIndex index = indexWith("Ana", {{"a.jpg", 0}});
  EXPECT_EQ(planned({request("a.jpg", -1)}, foldersOf({{ana, "Ana"}}), {}, index).front().fate,
            Fate(ExportPlanner::Lost()));
}

TEST(ExportPlanner, TakesAFileOutOfTheChatsFormerFolder) {
  DestinationIndex index = indexWith("Old", {{"a-2.jpg", 10}});
  index.addFile("Ana", "a.jpg", 99);
  const LeftoverFolders leftovers{{canonical(ana), {"Gone", "Old"}}};
  const std::vector<Request> requests{request("a.jpg", 10), request("a.jpg", 10)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}}), leftovers, index);
  EXPECT_EQ(plan[0].fate, movedFrom("Old", "a-2.jpg"));
  EXPECT_EQ(plan[0].dest, (ExportPlace{.folder = "Ana", .name = "a-2.jpg"}));
  EXPECT_FALSE(plan[0].alreadyPresent());
  EXPECT_EQ(plan[1].fate, Fate(Restored())) << "one file is moved once";
  EXPECT_EQ(plan[1].dest.name, "a-3.jpg");
}

TEST(ExportPlanner, LeavesTheFormerFoldersOfOtherChatsAlone) {
  DestinationIndex index = indexWith("Old", {{"a.jpg", 10}});
  const auto plan = planned({request("a.jpg", 10)}, foldersOf({{ana, "Ana"}}), {{canonical(bea), {"Old"}}}, index);
  EXPECT_EQ(plan[0].fate, Fate(Restored()));
}

TEST(ExportPlanner, TwentyThousandOfOneNameArePlannedSoonAndAreThereTheNextTime) {
  for (const int sizes : {1, 7, 20'000}) {
    std::vector<Request> requests;
    for (int count = 0; count < 20'000; ++count) requests.push_back(request("a.jpg", count % sizes));
    DestinationIndex index{.destination = "/out/messages"};
    const auto begin = std::chrono::steady_clock::now();
    const auto plan = planned(requests, foldersOf({{ana, "Ana"}}), {}, index);
    EXPECT_EQ(plan.back().dest.name, "a-20000.jpg");
    for (const PlannedCopy& copy : plan) index.addFile("Ana", copy.dest.name, copy.sourceSize);
    const auto later = planned(requests, foldersOf({{ana, "Ana"}}), {}, index);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    for (std::size_t place = 0; place < plan.size(); ++place) {
      ASSERT_TRUE(later[place].alreadyPresent()) << place;
      ASSERT_EQ(later[place].dest, plan[place].dest);
    }
  }
}

TEST(ExportPlanner, NamesFilesInTheFormOfTheDestination) {
  DestinationIndex index{.destination = "/out/messages", .nameForm = NameForm::portable};
  const std::vector<Request> requests{request("what?.jpg", 1), request("what*.jpg", 2)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}}), {}, index);
  EXPECT_EQ(plan[0].dest.name, "what-.jpg");
  EXPECT_EQ(plan[1].dest.name, "what--2.jpg");
}

TEST(ExportPlanner, KnowsAFileInTheOtherFormOfItsName) {
  for (const NameForm form : {NameForm::plain, NameForm::portable}) {
    DestinationIndex index = indexWith("Ana", {{form == NameForm::plain ? "what-.jpg" : "what?.jpg", 10}});
    index.nameForm = form;
    const auto plan = planned({request("what?.jpg", 10)}, foldersOf({{ana, "Ana"}}), {}, index);
    EXPECT_TRUE(plan[0].alreadyPresent());
  }
}

TEST(ExportPlanner, AFileInTheOtherFormIsNotTakenFromTheOneThatIsCalledSo) {
  DestinationIndex index = indexWith("Ana", {{"what-.jpg", 10}});
  const std::vector<Request> requests{request("what?.jpg", 10), request("what-.jpg", 10)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}}), {}, index);
  EXPECT_FALSE(plan[0].alreadyPresent());
  EXPECT_EQ(plan[0].dest.name, "what?.jpg");
  EXPECT_TRUE(plan[1].alreadyPresent());
}

TEST(ExportPlanner, AFileThatIsCalledLikeAnothersVariantKeepsItsCopy) {
  DestinationIndex index = indexWith("Ana", {{"report-2.pdf", 10}});
  const std::vector<Request> requests{request("report.pdf", 10), request("report-2.pdf", 10)};
  const auto plan = planned(requests, foldersOf({{ana, "Ana"}}), {}, index);
  EXPECT_FALSE(plan[0].alreadyPresent());
  EXPECT_EQ(plan[0].dest.name, "report.pdf");
  EXPECT_TRUE(plan[1].alreadyPresent());
}

TEST(ExportPlanner, MovesAFileInTheOtherFormOutOfTheFormerFolder) {
  DestinationIndex index = indexWith("Old", {{"what-.jpg", 10}});
  const auto plan = planned({request("what?.jpg", 10)}, foldersOf({{ana, "Ana"}}), {{canonical(ana), {"Old"}}}, index);
  EXPECT_EQ(plan[0].fate, movedFrom("Old", "what-.jpg"));
  EXPECT_EQ(plan[0].dest.name, "what?.jpg");
}

TEST(ExportPlanner, CanBeCancelled) {
  const std::vector<Request> requests(1000, request("a.jpg", 1));
  DestinationIndex index;
  EXPECT_THAT(
      [&] {
        planned(requests, foldersOf({{ana, "Ana"}}), {}, index, [] { return true; });
      },
      Fixture::failsWith(TidewellError::cancelled()));
}

TEST(ExportPlanner, FindsTheFormerFoldersOfAllOfAChatsJIDs) {
  const auto snapshot = ExportTest::snapshotOf({{ana, "Ana"}}, {{anaLID, ana}});
  DestinationIndex index;
  for (const char* folder : {"Ana", "By LID", "5511900009999@s.whatsapp.net", "Somebody"}) {
    index.addFile(folder, "a.jpg", 1);
  }
  index.addFile(ana, "a.jpg", 1);
  const ExportPlanner::PathJIDs paths{{canonical(ana), {ana, "5511900009999@s.whatsapp.net"}}};
  const FolderAssignment persisted{{ana, "ANA"}, {anaLID, "by lid"}, {bea, "Somebody"}};
  const auto leftovers = ExportPlanner::leftoverFoldersByOwner({.folderNames = foldersOf({{ana, "Ana"}}),
                                                                .pathJIDs = paths,
                                                                .persisted = persisted,
                                                                .snapshot = snapshot,
                                                                .index = index});
  EXPECT_EQ(leftovers, (LeftoverFolders{{canonical(ana), {ana, "By LID", "5511900009999@s.whatsapp.net"}}}));
}

TEST(ExportPlanner, AFolderInUseIsNobodysFormerFolder) {
  const auto snapshot = ExportTest::snapshotOf({{ana, "Ana"}, {bea, "Bea"}});
  DestinationIndex index = indexWith("Ana", {{"a.jpg", 1}});
  const auto leftovers =
      ExportPlanner::leftoverFoldersByOwner({.folderNames = foldersOf({{ana, "Ana-2"}, {bea, "Ana"}}),
                                             .pathJIDs = {},
                                             .persisted = {{ana, "Ana"}},
                                             .snapshot = snapshot,
                                             .index = index});
  EXPECT_EQ(leftovers, LeftoverFolders{});
}

}  // namespace
