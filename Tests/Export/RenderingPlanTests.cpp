#include "TidewellCore/Export/RenderingPlan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Library/LibraryFile.h"

namespace {

using testing::ElementsAre;

// A library of chats with that many messages, and what was made of it.
class RenderingPlanTest : public testing::Test {
 protected:
  // The newest message of a chat is as old as its place among them says: the first added is the newest.
  void add(std::int64_t messages) {
    const auto id = static_cast<std::int64_t>(chats.size()) + 1;
    chats.push_back({.id = id, .page = "chat" + std::to_string(id), .changed = 1});
    grow(id, messages);
  }
  void grow(std::int64_t id, std::int64_t messages) {
    const SQLiteStatement insert(
        library.database(),
        "INSERT INTO message (chat, key, time, place, from_me, deleted_later) VALUES (?, ?, ?, 0, 0, 0)");
    SQLiteTransaction transaction(library.database());
    for (; messages > 0; --messages) insert.run({id, ++lastKey, 1000.0 - static_cast<double>(id)});
    transaction.commit();
  }

  RenderingPlan plan() const {
    std::vector<RenderingPlan::Subject> subjects;
    for (const KeptChat& chat : chats) subjects.push_back({.kept = &chat, .manner = {1}});
    return RenderingPlan::make(subjects, known, library.database(), folder.path());
  }
  // Makes what is planned.
  void make() {
    Renderings made;
    for (const RenderingPlan::Shelf& shelf : plan().shelves) {
      made.shelves[shelf.number];
      for (const RenderingPlan::Chat& chat : shelf.chats) {
        made.chats[chats[chat.number].id] = chat.rendering;
        if (chat.rendering.messageCount > 0) {
          RenderedBlock block{.file = "block-0000000000000000.js", .size = 0};
          block.parts = {{.page = chats[chat.number].page, .count = chat.rendering.messageCount}};
          made.shelves[shelf.number].push_back(block);
        }
      }
    }
    known = made;
  }

  static std::vector<std::vector<std::size_t>> chatsOf(const RenderingPlan& plan) {
    std::vector<std::vector<std::size_t>> numbers;
    for (const RenderingPlan::Shelf& shelf : plan.shelves) {
      numbers.emplace_back();
      for (const RenderingPlan::Chat& chat : shelf.chats) numbers.back().push_back(chat.number);
    }
    return numbers;
  }
  static std::vector<bool> stale(const RenderingPlan& plan) {
    std::vector<bool> stale;
    for (const RenderingPlan::Shelf& shelf : plan.shelves) stale.push_back(shelf.isStale);
    return stale;
  }

  Fixture::TemporaryDirectory folder;
  LibraryFile library = LibraryFile::open(folder.path());
  std::ofstream blockFile{folder / "block-0000000000000000.js"};
  std::vector<KeptChat> chats;
  Renderings known;
  std::int64_t lastKey = 0;
};

TEST_F(RenderingPlanTest, ShortChatsShareAShelfAndLongOnesHaveTheirOwn) {
  for (const std::int64_t messages : {1500, 2001, 1500, 1500, 0}) add(messages);
  EXPECT_THAT(chatsOf(plan()), ElementsAre(ElementsAre(0, 2), ElementsAre(1), ElementsAre(3, 4)));
}

TEST_F(RenderingPlanTest, WhatWasMadeStands) {
  for (const std::int64_t messages : {1500, 2001, 1500, 1500}) add(messages);
  EXPECT_THAT(stale(plan()), ElementsAre(true, true, true));
  make();
  EXPECT_THAT(stale(plan()), ElementsAre(false, false, false));
}

TEST_F(RenderingPlanTest, AChangedChatMakesItsShelfAlone) {
  for (const std::int64_t messages : {1500, 2001, 1500, 1500}) add(messages);
  make();
  grow(3, 1);
  chats[2].changed = 2;
  const RenderingPlan now = plan();
  EXPECT_THAT(chatsOf(now), ElementsAre(ElementsAre(0, 2), ElementsAre(1), ElementsAre(3)));
  EXPECT_THAT(stale(now), ElementsAre(true, false, false));
  EXPECT_FALSE(now.shelves[0].chats[0].isStale);
  EXPECT_TRUE(now.shelves[0].chats[1].isStale);
}

TEST_F(RenderingPlanTest, ANewChatGoesToTheLastShelfThatHasRoom) {
  for (const std::int64_t messages : {1500, 2001, 1500, 1500}) add(messages);
  make();
  add(1000);
  EXPECT_THAT(chatsOf(plan()), ElementsAre(ElementsAre(0, 2), ElementsAre(1), ElementsAre(3, 4)));
}

TEST_F(RenderingPlanTest, AChatThatOutgrowsItsShelfGetsItsOwn) {
  for (const std::int64_t messages : {1500, 1500}) add(messages);
  make();
  grow(1, 3000);
  chats[0].changed = 2;
  EXPECT_THAT(chatsOf(plan()), ElementsAre(ElementsAre(0), ElementsAre(1)));
  EXPECT_THAT(stale(plan()), ElementsAre(true, true));
  make();
  EXPECT_THAT(stale(plan()), ElementsAre(false, false));
}

TEST_F(RenderingPlanTest, AChatThatIsNoLongerThereLeavesItsShelf) {
  for (const std::int64_t messages : {1500, 1500}) add(messages);
  make();
  chats.pop_back();
  EXPECT_THAT(chatsOf(plan()), ElementsAre(ElementsAre(0)));
  EXPECT_THAT(stale(plan()), ElementsAre(true));
}

}  // namespace
