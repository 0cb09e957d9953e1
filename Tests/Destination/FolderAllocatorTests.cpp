#include "TidewellCore/Destination/FolderAllocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Export/PlannedChat.h"
#include "TidewellCore/FileNaming.h"

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::foldersOf;
using ExportTest::snapshotOf;
using Names = std::vector<std::string>;

std::vector<CanonicalJID> canonical(const Names& jids) {
  std::vector<CanonicalJID> all;
  for (const std::string& jid : jids) all.push_back(ExportTest::canonical(jid));
  return all;
}

FolderAllocator::PlannedNames plannedNames(const std::map<std::string, Names>& names) {
  FolderAllocator::PlannedNames all;
  for (const auto& [jid, files] : names) all.emplace(ExportTest::canonical(jid), files);
  return all;
}

// Chats that are all called by the user part of their JID, "1@x" by "1".
FolderAllocator::Choice choiceFor(const Names& jids) {
  return {.jids = canonical(jids),
          .desiredName = [](const CanonicalJID& jid) { return jid.text().substr(0, jid.text().find('@')); },
          .historicalNames = [](const CanonicalJID&) { return Names{}; },
          .canAdopt = [](const std::string&, const CanonicalJID&) { return true; }};
}

TEST(FolderAllocator, GivesEveryChatAFolderNamedAfterIt) {
  EXPECT_EQ(FolderAllocator::assign(choiceFor({"2@x", "1@x"})), (foldersOf({{"1@x", "1"}, {"2@x", "2"}})));
}

TEST(FolderAllocator, LeavesOutAChatWithoutJID) {
  EXPECT_EQ(FolderAllocator::assign(choiceFor({"", "1@x"})), (foldersOf({{"1@x", "1"}})));
}

TEST(FolderAllocator, TellsChatsOfOneNameApartInTheOrderOfTheirJIDs) {
  auto choice = choiceFor({"9@x", "10@x", "8@x"});
  choice.desiredName = [](const CanonicalJID& jid) { return jid == "9@x" ? "FAMILY" : "Family"; };
  EXPECT_EQ(FolderAllocator::assign(choice),
            (foldersOf({{"10@x", "Family"}, {"8@x", "Family-2"}, {"9@x", "FAMILY-3"}})));
}

TEST(FolderAllocator, TellsComposedAndDecomposedNamesApart) {
  auto choice = choiceFor({"1@x", "2@x"});
  choice.desiredName = [](const CanonicalJID& jid) { return jid == "1@x" ? "A\u0301" : "\u00C1"; };
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "A\u0301"}, {"2@x", "\u00C1-2"}})));
}

TEST(FolderAllocator, CallsAChatWithoutTitleByItsJID) {
  auto choice = choiceFor({"1@x"});
  choice.desiredName = [](const CanonicalJID&) { return ""; };
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "1@x"}})));
}

TEST(FolderAllocator, CleansTheNamesOfNewFolders) {
  auto choice = choiceFor({"1@x", "2@x"});
  choice.desiredName = [](const CanonicalJID& jid) { return jid == "1@x" ? "../a:b" : " . "; };
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "a-b"}, {"2@x", "Untitled"}})));
}

TEST(FolderAllocator, NeverGivesOutTheNamesOfItsOwnFolders) {
  auto choice = choiceFor({"avatars@x", "Messages@x", "_viewer@x"});
  choice.persisted = {{"avatars@x", "avatars"}};
  EXPECT_EQ(FolderAllocator::assign(choice),
            (foldersOf({{"Messages@x", "Messages-2"}, {"_viewer@x", "_viewer-2"}, {"avatars@x", "avatars-2"}})));
}

TEST(FolderAllocator, PrefersTheRememberedFolderToEverythingElse) {
  auto choice = choiceFor({"1@x"});
  choice.persisted = {{"1@x", "remembered"}};
  choice.existing = {{"1", {"a.jpg"}}, {"full", {"a.jpg", "b.jpg"}}};
  choice.exportFileNames = plannedNames({{"1@x", {"a.jpg", "b.jpg"}}});
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "remembered"}})));
}

TEST(FolderAllocator, GivesAFolderRememberedTwiceToTheFirstChat) {
  auto choice = choiceFor({"2@x", "1@x"});
  choice.persisted = {{"1@x", "Same"}, {"2@x", "same"}};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "Same"}, {"2@x", "2"}})));
}

TEST(FolderAllocator, SpellsAFolderAsItIsOnDisk) {
  auto choice = choiceFor({"1@x", "Ana@x"});
  choice.persisted = {{"1@x", "FAMILIA\u0301"}};
  choice.existing = {{"famili\u00E1", {}}, {"ANA", {}}};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "famili\u00E1"}, {"Ana@x", "ANA"}})));
}

TEST(FolderAllocator, FindsTheFolderThatHoldsMostOfTheChatsFiles) {
  auto choice = choiceFor({"1@x"});
  choice.existing = {{"1", {}}, {"few", {"a.jpg"}}, {"most", {"a.jpg", "b.jpg", "other.jpg"}}};
  choice.exportFileNames = plannedNames({{"1@x", {"A.jpg", "b.JPG", "c.jpg"}}});
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "most"}})));
}

TEST(FolderAllocator, TakesTheFirstOfFoldersThatHoldEquallyMany) {
  auto choice = choiceFor({"1@x"});
  choice.existing = {{"b", {"a.jpg"}}, {"c", {"a.jpg"}}, {"d", {}}};
  choice.exportFileNames = plannedNames({{"1@x", {"a.jpg"}}});
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "b"}})));
}

TEST(FolderAllocator, TakesNoFolderForItsFilesThatTheChatMayNotHave) {
  auto choice = choiceFor({"1@x"});
  choice.existing = {{"others", {"a.jpg", "b.jpg"}}, {"own", {"a.jpg"}}};
  choice.exportFileNames = plannedNames({{"1@x", {"a.jpg", "b.jpg"}}});
  choice.canAdopt = [](const std::string& folder, const CanonicalJID&) { return folder != "others"; };
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "own"}})));
}

TEST(FolderAllocator, AdoptsAFolderWithANameThatTheChatHadBefore) {
  auto choice = choiceFor({"1@x"});
  choice.historicalNames = [](const CanonicalJID&) { return Names{"Old/name", "Older"}; };
  choice.existing = {{"Older", {}}, {"Old-name", {}}};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "Old-name"}})));
  choice.existing = {{"Older-16", {}}};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "Older-16"}})));
  choice.existing = {{"Older-17", {}}};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "1"}})));
}

TEST(FolderAllocator, MakesANewFolderBesideOneOfTheSameNameThatIsNotTheChats) {
  auto choice = choiceFor({"1@x"});
  choice.existing = {{"1", {}}};
  choice.canAdopt = [](const std::string&, const CanonicalJID&) { return false; };
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "1-2"}})));
}

TEST(FolderAllocator, AFolderNamedAfterAJIDIsForThatChatAlone) {
  EXPECT_TRUE(FolderAllocator::isAdoptableFolder("Ana", ana));
  EXPECT_TRUE(FolderAllocator::isAdoptableFolder("5511900001111@S.WhatsApp.net", ana));
  EXPECT_FALSE(FolderAllocator::isAdoptableFolder(ana, bea));
  EXPECT_FALSE(FolderAllocator::isAdoptableFolder(anaLID, ana));
  EXPECT_FALSE(FolderAllocator::isAdoptableFolder("1-2@G.US", ana));
  const auto snapshot = snapshotOf({{ana, "Ana"}, {bea, "Bea"}});
  const auto folders = FolderAllocator::allocate({.exportFileNames = plannedNames({{ana, {"a.jpg"}}, {bea, {"a.jpg"}}}),
                                                  .existing = {{ana, {"a.jpg"}}},
                                                  .persisted = {}},
                                                 snapshot);
  EXPECT_EQ(folders, (foldersOf({{ana, ana}, {bea, "Bea"}})));
}

TEST(FolderAllocator, KeepsTheFolderOfAChatThatThisBackupLacks) {
  const auto snapshot = snapshotOf({{bea, "Ana"}});
  const FolderAllocator::PlannedNames names = plannedNames({{bea, {"a.jpg"}}});
  const FolderAssignment persisted{{ana, "Ana"}};
  const auto folders = FolderAllocator::allocate(
      {.exportFileNames = names, .existing = {{"Ana", {"a.jpg"}}}, .persisted = persisted}, snapshot);
  EXPECT_EQ(folders, (foldersOf({{bea, "Ana-2"}})));
  EXPECT_EQ(PlannedChats::toRemember(PlannedChats::of(folders, persisted, snapshot)),
            (FolderAssignment{{ana, "Ana"}, {bea, "Ana-2"}}));
}

TEST(FolderAllocator, RemembersAFolderForBothFormsOfAJID) {
  const auto snapshot = snapshotOf({{ana, "Ana"}}, {{anaLID, ana}});
  const FolderAssignment both{{ana, "Ana"}, {anaLID, "Ana"}};
  EXPECT_EQ(FolderAllocator::expandPersisted({{anaLID, "Ana"}}, canonical({ana}), snapshot), both);
  EXPECT_EQ(FolderAllocator::expandPersisted({{ana, "Ana"}}, canonical({ana}), snapshot), both);
  EXPECT_EQ(FolderAllocator::expandPersisted({{ana, "A"}, {anaLID, "L"}}, canonical({ana}), snapshot),
            (FolderAssignment{{ana, "A"}, {anaLID, "L"}}));
}

TEST(FolderAllocator, KnowsTheNamesThatEarlierExportsMayHaveGiven) {
  const auto snapshot = snapshotOf({{ana, "Ana/Silva"}}, {{anaLID, ana}});
  const Names names = FolderAllocator::historicalNames(ana, snapshot);
  const Names expected{"Ana/Silva", "Ana-Silva", ana, anaLID, "+55 11 90000-1111"};
  ASSERT_GE(names.size(), expected.size());
  EXPECT_EQ(Names(names.begin(), names.begin() + 5), expected);
}

// Twenty thousand chats, "10000@x" and so on.
Names manyChats() {
  Names jids;
  for (int count = 0; count < 20'000; ++count) jids.push_back(std::to_string(10'000 + count) + "@x");
  return jids;
}

TEST(FolderAllocator, TwentyThousandChatsOfOneNameGetFoldersSoon) {
  auto choice = choiceFor(manyChats());
  choice.desiredName = [](const CanonicalJID&) { return "Ana"; };
  const auto begin = std::chrono::steady_clock::now();
  const ChatFolders folders = FolderAllocator::assign(choice);
  EXPECT_EQ(folders.at(ExportTest::canonical("10000@x")), "Ana");
  EXPECT_EQ(folders.at(ExportTest::canonical("29999@x")), "Ana-20000");
  for (const auto& [jid, folder] : folders) choice.existing[folder];
  // Others' folders, which nobody here may have.
  for (const auto& [folder, contents] : choice.existing) choice.kept.insert(FileNaming::normalizedKey(folder));
  EXPECT_EQ(FolderAllocator::assign(choice).at(ExportTest::canonical("29999@x")), "Ana-40000");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(FolderAllocator, AFolderThatIsKeptGoesToTheChatThatItIsRememberedForAlone) {
  auto choice = choiceFor({"1@x", "2@x"});
  choice.desiredName = [](const CanonicalJID&) { return "Ana"; };
  choice.existing = {{"Ana", {}}};
  choice.kept = {"ana", "ana-2"};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "Ana-2"}, {"2@x", "Ana-3"}})));
  choice.persisted = {{"2@x", "Ana"}};
  EXPECT_EQ(FolderAllocator::assign(choice), (foldersOf({{"1@x", "Ana-2"}, {"2@x", "Ana"}})));
}

TEST(FolderAllocator, GivesFoldersInTheFormOfTheDestination) {
  auto choice = choiceFor({"1@x", "2@x", "3@x", "4@x"});
  choice.nameForm = NameForm::portable;
  choice.desiredName = [](const CanonicalJID& jid) { return jid == "4@x" ? "Nul" : "Pizza?"; };
  choice.persisted = {{"3@x", "Remembered? "}};
  choice.existing = {{"PIZZA-", {}}};
  EXPECT_EQ(FolderAllocator::assign(choice),
            (foldersOf({{"1@x", "PIZZA-"}, {"2@x", "Pizza--2"}, {"3@x", "Remembered-"}, {"4@x", "Nul-"}})));
}

TEST(FolderAllocator, CanBeCancelled) {
  EXPECT_THAT([] { FolderAllocator::assign(choiceFor(manyChats()), [] { return true; }); },
              Fixture::failsWith(TidewellError::cancelled()));
}

TEST(FolderAllocator, ListsTheFoldersThatMayBeChats) {
  const Fixture::TemporaryDirectory root;
  for (const char* name : {"Bea", "ana", ".hidden", "_viewer", "AVATARS", "Messages", "_other"}) {
    std::filesystem::create_directory(root / name);
  }
  Fixture::writeFile(root / "a file", "");
  EXPECT_EQ(FolderAllocator::existingChatFolders(root.path()), (Names{"Bea", "_other", "ana"}));
  EXPECT_EQ(FolderAllocator::existingChatFolders(root / "missing"), Names{});
}

TEST(FolderAllocator, AFolderWhoseNameIsNoTextIsNoChats) {
  const Fixture::TemporaryDirectory root;
  std::filesystem::create_directory(root / "caf\xE9");  // Latin-1
  EXPECT_EQ(FolderAllocator::existingChatFolders(root.path()), Names{});
}

TEST(FolderAllocator, KnowsNamesThatOnlyOlderExportsGave) {
  EXPECT_TRUE(FolderAllocator::isLegacyFolderName(ana));
  EXPECT_TRUE(FolderAllocator::isLegacyFolderName("12@LID"));
  EXPECT_TRUE(FolderAllocator::isLegacyFolderName("1-2@g.us-2"));
  EXPECT_TRUE(FolderAllocator::isLegacyFolderName("\u200E \u200F"));
  EXPECT_FALSE(FolderAllocator::isLegacyFolderName("Ana"));
}

}  // namespace
