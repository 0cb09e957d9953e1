#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "Tests/Library/LibraryScene.h"
#include "Tests/Library/SaidMessages.h"

namespace {

using ExportTest::ana;
using ExportTest::bea;
using ExportTest::canonical;
using LibraryTest::Said;
using LibraryTest::snapshotOf;
using testing::ElementsAre;
using testing::IsEmpty;

Scope chat(const std::string& jid) { return {.chats = std::set{canonical(jid)}}; }
Scope time(double from, double before) { return {.from = dateFromUnixTime(from), .before = dateFromUnixTime(before)}; }

std::vector<std::string> goneTexts(const LibraryScene& scene, const std::string& jid) {
  std::vector<std::string> texts;
  for (const ArchiveMessage& message : scene.messages(jid)) {
    if (message.isGone) texts.push_back(message.text.value_or(""));
  }
  return texts;
}

// All that the library keeps of its chats, but for who came first.
using MessageState = std::tuple<std::optional<double>, std::int64_t, std::string, std::string, std::optional<double>>;
using ChatState = std::tuple<std::string, bool, double, std::vector<MessageState>>;
std::map<std::string, ChatState> stateOf(const LibraryScene& scene) {
  std::map<std::string, ChatState> state;
  for (const KeptChat& chat : scene.library.chats()) {
    std::vector<MessageState> messages;
    const KeptMessages kept = KeptChats::messages(scene.library.database(), chat.id);
    for (const KeptMessage& message : kept.list) {
      messages.emplace_back(message.time, message.placeInSecond, message.stanzaID, message.text, message.lastTold);
    }
    state.emplace(chat.jid, ChatState(chat.name, chat.isGone, chat.toldAt, std::move(messages)));
  }
  return state;
}

const std::vector<Said> first{{1, 10, "one", "A"}, {1, 20, "two", "B"}, {1, 30, "three", "C"}, {2, 5, "bea", "D"}};

TEST(PartsOfBackups, AChatThatWasNotChosenIsNotGone) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, first), 100);
  scene.takePart(snapshotOf({{ana, "Ana"}}, {{1, 40, "four", "E"}}), chat(ana), 200);
  EXPECT_FALSE(scene.chat(bea)->isGone);
  EXPECT_THAT(scene.texts(bea), ElementsAre("bea"));
  EXPECT_THAT(goneTexts(scene, ana), ElementsAre("one", "two", "three")) << "the whole chat was told";
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 40, "four", "E"}}), 200);
  EXPECT_TRUE(scene.chat(bea)->isGone);
}

TEST(PartsOfBackups, WhatStandsOutsideOfTheDaysIsNeitherGoneNorDeleted) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, first), 100);
  const auto later = [] {
    return snapshotOf({{ana, "Ana Lima"}}, {{1, 20, "two!", "B"}, {1, 22, "new", "E"}, {1, 50, "outside", "F"}}, 7);
  };
  scene.takePart(later(), time(15, 25), 200);
  EXPECT_THAT(scene.texts(ana), ElementsAre("one", "two!", "new", "three"));
  EXPECT_THAT(goneTexts(scene, ana), IsEmpty());
  EXPECT_EQ(scene.chat(ana)->name, "Ana Lima");
  EXPECT_FALSE(scene.chat(bea)->isGone);
  scene.take(later(), 200);
  EXPECT_THAT(scene.texts(ana), ElementsAre("one", "two!", "new", "three", "outside"));
  EXPECT_THAT(goneTexts(scene, ana), ElementsAre("one", "three"));
  EXPECT_TRUE(scene.chat(bea)->isGone);
}

TEST(PartsOfBackups, APartOfANewerBackupSaysWhatIsStillThere) {
  LibraryScene scene;
  scene.takePart(snapshotOf({{ana, "Ana"}}, {{1, 20, "two", "B"}}), time(15, 25), 300);
  EXPECT_THAT(goneTexts(scene, ana), IsEmpty());
  scene.take(snapshotOf({{bea, "Bea"}}, {{1, 5, "bea", "D"}}), 200);
  EXPECT_FALSE(scene.chat(ana)->isGone) << "a newer backup told of it";
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 30, "three", "C"}}), 250);
  EXPECT_THAT(goneTexts(scene, ana), IsEmpty());
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 30, "three", "C"}}), 400);
  EXPECT_THAT(goneTexts(scene, ana), ElementsAre("two"));
}

TEST(PartsOfBackups, APartOfAnOlderBackupIsGoneWhereTheNewerLacksIt) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 30, "three", "C"}}), 200);
  scene.takePart(snapshotOf({{ana, "Anna"}, {bea, "Bea"}}, first), time(0, 25), 100);
  EXPECT_THAT(scene.texts(ana), ElementsAre("one", "two", "three"));
  EXPECT_THAT(goneTexts(scene, ana), ElementsAre("one", "two"));
  EXPECT_EQ(scene.chat(ana)->name, "Ana");
  EXPECT_TRUE(scene.chat(bea)->isGone);
}

TEST(PartsOfBackups, TakingTheSamePartAgainChangesNoByte) {
  LibraryScene scene;
  const auto told = [] { return snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, first); };
  scene.take(told(), 100);
  scene.takePart(told(), time(15, 25), 200);
  const std::string before = ExportTest::textOf(scene.folder / LibraryFile::fileName);
  scene.reopen();
  scene.takePart(told(), time(15, 25), 200);
  EXPECT_EQ(ExportTest::textOf(scene.folder / LibraryFile::fileName), before);
  scene.takePart(told(), chat(ana), 100);
  EXPECT_EQ(ExportTest::textOf(scene.folder / LibraryFile::fileName), before) << "nothing new of an older backup";
}

TEST(PartsOfBackups, PeopleOfWhatIsLeftOutAreNotKept) {
  LibraryScene scene;
  scene.takePart(snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, {{1, 10, "nobody", "A"}, {2, 20, "ask @5511900001111", "B"}}),
                 chat(ana), 100);
  EXPECT_EQ(scene.library.people().known(ana), nullptr);
  EXPECT_EQ(scene.chat(bea), nullptr);
}

TEST(PartsOfBackups, ChatsThatTurnOutToBeOneKeepWhatAPartTold) {
  using ExportTest::anaLID;
  LibraryScene scene;
  scene.takePart(snapshotOf({{anaLID, "Ana"}}, {{1, 10, "by lid", "A"}}), time(0, 15), 300);
  scene.take(snapshotOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{2, 20, "by phone", "B"}}), 100);
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 20, "by phone", "B"}}, 1, {{anaLID, ana}}), 200);
  EXPECT_THAT(scene.texts(ana), ElementsAre("by lid", "by phone"));
  EXPECT_THAT(goneTexts(scene, ana), IsEmpty());
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 20, "by phone", "B"}}, 1, {{anaLID, ana}}), 400);
  EXPECT_THAT(goneTexts(scene, ana), ElementsAre("by lid"));
}

TEST(PartsOfBackups, APartAndThenEverythingIsEverything) {
  const auto told = [] { return snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, first); };
  LibraryScene atOnce;
  atOnce.take(told(), 100);
  for (const Scope& scope : {chat(ana), chat(bea), time(0, 15), time(15, 25), time(25, 99)}) {
    LibraryScene scene;
    scene.takePart(told(), scope, 100);
    EXPECT_NE(stateOf(scene), stateOf(atOnce));
    scene.take(told(), 100);
    EXPECT_EQ(stateOf(scene), stateOf(atOnce));
    EXPECT_FALSE(scene.chat(ana)->told.empty());
  }
}

// Three backups, of which a message is edited, one is deleted, one comes and goes, and a chat goes.
ChatStorageSnapshot backup(int number) {
  if (number == 0) return snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, first);
  if (number == 1) {
    return snapshotOf({{ana, "Ana Lima"}}, {{1, 20, "two!", "B"}, {1, 25, "between", "E"}, {1, 30, "three", "C"}}, 2);
  }
  return snapshotOf({{ana, "Ana Costa"}}, {{1, 20, "two!!", "B"}, {1, 30, "three!", "C"}, {1, 40, "four", "F"}}, 3);
}

TEST(PartsOfBackups, TheOrderOfBackupsAndTheirPartsDoesNotMatter) {
  const std::vector<std::function<void(LibraryScene&)>> exports{
      [](LibraryScene& scene) { scene.take(backup(0), 100); }, [](LibraryScene& scene) { scene.take(backup(1), 101); },
      [](LibraryScene& scene) { scene.take(backup(2), 102); },
      [](LibraryScene& scene) { scene.takePart(backup(1), time(15, 28), 101); },
      [](LibraryScene& scene) { scene.takePart(backup(2), time(35, 99), 102); }};
  LibraryScene whole;
  for (int number : {0, 1, 2}) exports[static_cast<std::size_t>(number)](whole);
  std::vector<std::size_t> order{0, 1, 2, 3, 4};
  do {
    LibraryScene scene;
    for (const std::size_t number : order) exports[number](scene);
    EXPECT_EQ(stateOf(scene), stateOf(whole)) << testing::PrintToString(order);
  } while (std::ranges::next_permutation(order).found);
}

// Without the newest backup as a whole.
TEST(PartsOfBackups, TheOrderOfPartsAloneDoesNotMatter) {
  const std::vector<std::function<void(LibraryScene&)>> exports{
      [](LibraryScene& scene) { scene.take(backup(0), 100); }, [](LibraryScene& scene) { scene.take(backup(1), 101); },
      [](LibraryScene& scene) { scene.takePart(backup(0), chat(bea), 100); },
      [](LibraryScene& scene) { scene.takePart(backup(2), time(15, 28), 102); },
      [](LibraryScene& scene) { scene.takePart(backup(2), time(35, 99), 102); }};
  std::vector<std::size_t> order{0, 1, 2, 3, 4};
  std::optional<std::map<std::string, ChatState>> expected;
  do {
    LibraryScene scene;
    for (const std::size_t number : order) exports[number](scene);
    if (!expected) expected = stateOf(scene);
    EXPECT_EQ(stateOf(scene), *expected) << testing::PrintToString(order);
    EXPECT_THAT(scene.texts(ana), ElementsAre("one", "two!!", "between", "three", "four"));
    EXPECT_THAT(goneTexts(scene, ana), ElementsAre("one"));
    EXPECT_EQ(scene.chat(ana)->name, "Ana Costa");
    EXPECT_TRUE(scene.chat(bea)->isGone);
  } while (std::ranges::next_permutation(order).found);
}

}  // namespace
