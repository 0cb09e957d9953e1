#include <gtest/gtest.h>

#include "Tests/Application/Screens/WindowScene.h"

namespace {

using ExportTest::ana;
using ExportTest::bea;
using WindowTest::Scene;
namespace fs = std::filesystem;

class ChatChooser : public Scene {
 protected:
  void reachOptions() {
    open();
    click("backupRow0");
    continueWithBackup();
  }
  void showList() {
    click("chooseChatsButton");
    ASSERT_TRUE(until([&] { return focused() == "chatSearchField"; }, "the list"));
  }
  bool isLeftOut(const std::string& jid) const { return state().chatChoice.leftOut.contains(jid); }
};

TEST_F(ChatChooser, ChoosesByClicks) {
  reachOptions();
  expectShown("All 3");
  showList();
  expectShown("Bea");
  click("chatRow0");
  EXPECT_TRUE(until([&] { return isLeftOut(ana); }, "Ana is left out"));
  expectShown("2 of 3");
  click("selectNoChatsButton");
  expectShown("0 of 3");
  click("chatRow1");
  EXPECT_FALSE(isLeftOut(bea));
  click("chatsChosenButton");
  ASSERT_TRUE(until([&] { return !isShown("chatSearchField"); }, "the list is gone"));
  expectShown("1 of 3");
  chooseDestination();
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  EXPECT_TRUE(fs::exists(destination / "messages" / "Bea"));
  EXPECT_FALSE(fs::exists(destination / "messages" / "Ana"));
}

TEST_F(ChatChooser, ChoosesByKeysAlone) {
  reachOptions();
  tabTo("chooseChatsButton");
  press(Qt::Key_Space);
  ASSERT_TRUE(until([&] { return focused() == "chatSearchField"; }, "the list"));
  type("be");
  ASSERT_TRUE(until([&] { return !isShown("chatRow1"); }, "what was found"));
  press(Qt::Key_Down);
  EXPECT_EQ(focused(), "chatRow0");
  press(Qt::Key_Space);
  EXPECT_TRUE(isLeftOut(bea));
  EXPECT_FALSE(isLeftOut(ana));
  tabTo("chatSearchField");
  press(Qt::Key_A, Qt::ControlModifier);
  press(Qt::Key_Delete);
  ASSERT_TRUE(until([&] { return isShown("chatRow2"); }, "all of them"));
  press(Qt::Key_Down);
  press(Qt::Key_End);
  EXPECT_EQ(focused(), "chatRow2");
  press(Qt::Key_Return);
  ASSERT_TRUE(until([&] { return focused() == "chooseChatsButton"; }, "the page again"));
  EXPECT_FALSE(state().chatChoice.isListShown);
}

TEST_F(ChatChooser, TellsWhenNothingIsFoundAndGoesWithEscape) {
  reachOptions();
  showList();
  type("Zacharias");
  expectShown("No chat has this name or number.");
  EXPECT_FALSE(item("selectAllChatsButton").isEnabled());
  press(Qt::Key_Escape);
  ASSERT_TRUE(until([&] { return !isShown("chatSearchField"); }, "the list is gone"));
  EXPECT_EQ(state().step, WizardStep::options);
  showList();
  EXPECT_TRUE(until([&] { return isShown("chatRow2"); }, "all of them"));
}

TEST_F(ChatChooser, TakesDays) {
  reachOptions();
  chooseDestination();
  tabTo("firstDayField");
  type("2024-05-");
  expectShown("Write a day like this: 2024-05-31");
  EXPECT_FALSE(item("startExportButton").isEnabled());
  type("01");
  expectGone("Write a day like this: 2024-05-31");
  EXPECT_TRUE(item("startExportButton").isEnabled());
  press(Qt::Key_Tab);
  EXPECT_EQ(focused(), "lastDayField");
  type("2024-04-30");
  expectShown("The last day comes before the first one");
}

}  // namespace
