#include "TidewellCore/CleanUp/FolderPairing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::group;
using FolderPairing::Evidence;
using FolderPairing::FolderListing;
using FolderPairing::Outcome;
using FolderPairing::Pair;

Outcome find(const Evidence& evidence, const std::map<std::string, FolderListing>& listings = {}) {
  return FolderPairing::find(evidence, [&](const std::string& folder) {
    const auto found = listings.find(folder);
    return found == listings.end() ? FolderListing{} : found->second;
  });
}

TEST(FolderPairing, TakesANameWithAJIDsServerForTheJID) {
  for (const std::string& jid : {ana, anaLID, group, std::string("5511@S.WhatsApp.Net")}) {
    EXPECT_EQ(FolderPairing::jidIfLegacyFolder(jid), jid);
  }
  for (const char* name : {"", "Ana", "ana@home", "Untitled"}) {
    EXPECT_EQ(FolderPairing::jidIfLegacyFolder(name), std::nullopt) << name;
  }
}

TEST(FolderPairing, AddsUpTheBytesThatTwoFoldersShare) {
  const FolderListing listing{{"a", 5}, {"b", 7}, {"c", 0}, {"d", -1}};
  EXPECT_EQ(FolderPairing::overlapBytes(listing, listing), 12);
  EXPECT_EQ(FolderPairing::overlapBytes(listing, {{"a", 5}, {"b", 8}, {"e", 9}}), 5);
  EXPECT_EQ(FolderPairing::overlapBytes(listing, {}), 0);
}

TEST(FolderPairing, LeavesFoldersAloneThatNothingTies) {
  EXPECT_EQ(find({.folders = {"Ana", "Bea", "Holiday", ana}}), Outcome{});
}

TEST(FolderPairing, PairsAFolderNamedAfterAJIDWithTheOneTheManifestNames) {
  const Outcome outcome = find({.folders = {ana, "Ana", "Bea"}, .manifest = {{ana, "Ana"}, {bea, "Bea"}}});
  EXPECT_THAT(outcome.pairs, ElementsAre(Pair{"Ana", ana, ana}));
  EXPECT_EQ(outcome.skippedAmbiguousCount, 0);
}

TEST(FolderPairing, KnowsAFolderInThePortableFormOfItsName) {
  const Outcome outcome = find({.folders = {ana, "Ana-"}, .manifest = {{ana, "Ana?"}}});
  EXPECT_THAT(outcome.pairs, ElementsAre(Pair{"Ana-", ana, ana}));
  const Outcome both = find({.folders = {ana, "Ana-", "Ana?"}, .manifest = {{ana, "Ana?"}}});
  EXPECT_THAT(both.pairs, ElementsAre(Pair{"Ana?", ana, ana}));
  const Outcome others = find({.folders = {ana, "Ana-"}, .manifest = {{ana, "Ana?"}, {bea, "Ana-"}}});
  EXPECT_THAT(others.pairs, IsEmpty());
}

TEST(FolderPairing, PairsAFolderNamedAfterAJIDWithTheOneTheArchiveNames) {
  EXPECT_THAT(find({.folders = {ana, "Ana"}, .archive = {{ana, "Ana"}}}).pairs, ElementsAre(Pair{"Ana", ana, ana}));
}

TEST(FolderPairing, TakesTheManifestsFolderBeforeTheArchives) {
  const Outcome outcome = find({.folders = {"Ana", "Anna"}, .manifest = {{ana, "Ana"}}, .archive = {{ana, "Anna"}}});
  EXPECT_THAT(outcome.pairs, ElementsAre(Pair{"Ana", "Anna", ana}));
  EXPECT_THAT(find({.folders = {"Ana", ana}, .manifest = {{ana, ana}}, .archive = {{ana, "Ana"}}}).pairs,
              ElementsAre(Pair{ana, "Ana", ana}));
}

TEST(FolderPairing, PassesOverAFolderThatIsNotThere) {
  const Outcome outcome =
      find({.folders = {"Ana", ana}, .manifest = {{ana, "Gone"}, {bea, "Lost"}}, .archive = {{ana, "Ana"}}});
  EXPECT_THAT(outcome.pairs, ElementsAre(Pair{"Ana", ana, ana}));
}

TEST(FolderPairing, PairsSeveralFoldersOfOneChatInOrder) {
  const Outcome outcome = find({.folders = {"Z", "B", "A", group, bea, "Bea"},
                                .manifest = {{group, "B"}, {bea, "Bea"}},
                                .archive = {{group, "Z"}, {group, "A"}}});
  EXPECT_THAT(outcome.pairs, ElementsAre(Pair{"B", group, group}, Pair{"B", "A", group}, Pair{"B", "Z", group},
                                         Pair{"Bea", bea, bea}));
}

TEST(FolderPairing, ChoosesByTheSharedBytesThenByTheNameAlone) {
  const Evidence evidence{.folders = {"A", "B", ana}, .archive = {{ana, "A"}, {ana, "B"}, {ana, ana}}};
  EXPECT_THAT(find(evidence).pairs, ElementsAre(Pair{"A", ana, ana}, Pair{"A", "B", ana}));
  EXPECT_THAT(find(evidence, {{"A", {{"x", 5}}}, {"B", {{"x", 5}, {"y", 1}}}, {ana, {{"y", 1}}}}).pairs,
              ElementsAre(Pair{"B", ana, ana}, Pair{"B", "A", ana}));
  EXPECT_THAT(find({.folders = {ana, "\u200E"}, .archive = {{ana, ana}, {ana, "\u200E"}}}).pairs,
              ElementsAre(Pair{ana, "\u200E", ana}))
      << "both are legacy names";
}

TEST(FolderPairing, IgnoresTheLetterCaseOfTheServerAlone) {
  const std::string shouted = "5511900001111@S.WHATSAPP.NET";
  EXPECT_THAT(find({.folders = {shouted, "Ana"}, .manifest = {{ana, "Ana"}}}).pairs,
              ElementsAre(Pair{"Ana", shouted, ana}));
  EXPECT_THAT(find({.folders = {"One", "Two"}, .manifest = {{"a@x", "One"}}, .archive = {{"A@x", "Two"}}}).pairs,
              IsEmpty());
}

TEST(FolderPairing, FindsFoldersByTheKeyOfTheirName) {
  EXPECT_THAT(find({.folders = {"JOSE\u0301", ana}, .manifest = {{ana, "José"}}}).pairs,
              ElementsAre(Pair{"JOSE\u0301", ana, ana}));
  EXPECT_THAT(find({.folders = {"ANA", "Ana", ana}, .manifest = {{ana, "Ana"}}}).pairs,
              ElementsAre(Pair{"Ana", ana, ana}))
      << "the exact spelling wins";
  EXPECT_EQ(find({.folders = {"ANA", "Ana", ana}, .manifest = {{ana, "ana"}}}), Outcome{}) << "which one is meant?";
}

TEST(FolderPairing, KnowsALIDAsFarAsASourceGivesItAPhonesFolder) {
  EXPECT_EQ(find({.folders = {anaLID, "Ana"}, .manifest = {{ana, "Ana"}}}), Outcome{}) << "nothing links them";
  EXPECT_THAT(find({.folders = {anaLID, ana, "Ana"}, .manifest = {{ana, "Ana"}, {anaLID, "Ana"}}}).pairs,
              ElementsAre(Pair{"Ana", anaLID, ana}, Pair{"Ana", ana, ana}));
  EXPECT_THAT(find({.folders = {anaLID, "Ana"}, .archive = {{ana, "Ana"}, {anaLID, "Ana"}}}).pairs,
              ElementsAre(Pair{"Ana", anaLID, ana}));
}

TEST(FolderPairing, DoesNotTrustALIDOfTwoPhones) {
  const Outcome outcome = find({.folders = {"Ana", "Bea", anaLID},
                                .manifest = {{ana, "Ana"}, {anaLID, "Ana"}},
                                .archive = {{bea, "Bea"}, {anaLID, "Bea"}}});
  EXPECT_THAT(outcome.pairs, IsEmpty());
  EXPECT_EQ(outcome.skippedAmbiguousCount, 3) << "both folders, and the LID's that would go into either";
}

struct Conflict {
  const char* name;
  Evidence evidence;
  std::int64_t skipped;
};

void PrintTo(const Conflict& conflict, std::ostream* stream) { *stream << conflict.name; }

class FolderPairingConflict : public testing::TestWithParam<Conflict> {};

TEST_P(FolderPairingConflict, MergesNothingAndIsCounted) {
  const Outcome outcome = find(GetParam().evidence);
  EXPECT_THAT(outcome.pairs, IsEmpty());
  EXPECT_EQ(outcome.skippedAmbiguousCount, GetParam().skipped);
}

INSTANTIATE_TEST_SUITE_P(
    Of, FolderPairingConflict,
    testing::Values(
        Conflict{"NameAndManifest", {.folders = {ana, "Ana"}, .manifest = {{bea, ana}}, .archive = {{ana, "Ana"}}}, 1},
        Conflict{"NameAndArchive", {.folders = {ana, "Ana"}, .manifest = {{ana, "Ana"}}, .archive = {{bea, ana}}}, 1},
        Conflict{"ManifestAndArchive",
                 {.folders = {"Ana", "Bea"}, .manifest = {{ana, "Ana"}}, .archive = {{bea, "Ana"}, {bea, "Bea"}}},
                 2},
        Conflict{"TwoChatsInTheManifest", {.folders = {"Us", ana, bea}, .manifest = {{ana, "Us"}, {bea, "Us"}}}, 3},
        Conflict{"TwoChatsInTheArchive", {.folders = {"Us", ana}, .archive = {{ana, "Us"}, {bea, "Us"}}}, 2},
        Conflict{"ThreeJIDsOfOneFolder",
                 {.folders = {"Us", ana}, .manifest = {{ana, "Us"}, {bea, "Us"}, {anaLID, "Us"}}},
                 2},
        Conflict{"ALIDGivenAFolderWithTwoPhones",
                 {.folders = {"Us", "Bea", anaLID},
                  .manifest = {{bea, "Bea"}},
                  .archive = {{ana, "Us"}, {anaLID, "Us"}, {bea, "Us"}}},
                 2},
        Conflict{"APhoneWithTwoLIDs",
                 {.folders = {"Ana", "Anna"},
                  .manifest = {{ana, "Ana"}, {anaLID, "Ana"}},
                  .archive = {{ana, "Anna"}, {"200000000000002@lid", "Anna"}}},
                 2},
        Conflict{"ALIDNamedFolderOfAPhone",
                 {.folders = {anaLID, "Ana"}, .manifest = {{ana, anaLID}}, .archive = {{ana, "Ana"}}},
                 2}),
    [](const auto& conflict) { return std::string(conflict.param.name); });

}  // namespace
