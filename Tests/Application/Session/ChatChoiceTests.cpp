#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Application/Session/WizardScene.h"
#include "Tests/Export/ExportScene.h"

namespace {

using ExportTest::ana;
using ExportTest::bea;
using testing::ElementsAre;
using testing::IsEmpty;
using WizardTest::WizardScene;

ScanResult scanOf(const std::vector<std::string>& names) {
  ScanResult scan{.statsByKind = {{MediaKind::photos, {.count = 9, .byteCount = 900}}}};
  for (const std::string& name : names) {
    scan.chats.push_back({.jid = "55119000" + std::to_string(scan.chats.size()) + "1111@s.whatsapp.net",
                          .name = name,
                          .statsByKind = {{MediaKind::photos, {.count = 2, .byteCount = 10}},
                                          {MediaKind::videos, {.count = 1, .byteCount = 1000}}}});
  }
  return scan;
}

std::vector<std::string> found(const ScanResult& scan, const std::string& search) {
  const ChatChoice choice{.search = search};
  std::vector<std::string> names;
  for (const ScanChat& chat : scan.chats) {
    if (choice.fitsSearch(chat)) names.push_back(chat.name);
  }
  return names;
}

TEST(ChatChoice, SearchesNamesAndNumbers) {
  const ScanResult scan = scanOf({"João Silva", "Joana", "Família"});
  EXPECT_THAT(found(scan, ""), ElementsAre("João Silva", "Joana", "Família"));
  EXPECT_THAT(found(scan, " joa "), ElementsAre("João Silva", "Joana"));
  EXPECT_THAT(found(scan, "FAMILIA"), ElementsAre("Família"));
  EXPECT_THAT(found(scan, "9000-1"), ElementsAre("Joana"));
  EXPECT_THAT(found(scan, "whatsapp"), IsEmpty());
}

TEST(ChatChoice, CountsTheMediaOfTheChosenChats) {
  const ScanResult scan = scanOf({"Ana", "Bea", "Us"});
  ChatChoice choice;
  EXPECT_EQ(choice.stats(scan, {MediaKind::photos}), (MediaTypeStats{9, 900})) << "all that the scan found";
  EXPECT_EQ(choice.count(scan), 3);
  choice.leftOut = {scan.chats[1].jid};
  EXPECT_EQ(choice.stats(scan, {MediaKind::photos}), (MediaTypeStats{4, 20}));
  EXPECT_EQ(choice.stats(scan, {MediaKind::photos, MediaKind::videos}), (MediaTypeStats{6, 2020}));
  EXPECT_EQ(choice.count(scan), 2);
}

TEST(ChatChoice, KnowsWhatIsWrongWithDays) {
  const auto fault = [](const char* since, const char* until) {
    return ChatChoice{.since = since, .until = until}.fault().value_or("");
  };
  EXPECT_EQ(fault("", ""), "");
  EXPECT_EQ(fault(" 2024-05-31 ", " "), "");
  EXPECT_EQ(fault("2024-05-31", "2024-05-31"), "");
  EXPECT_EQ(fault("2024-05-3", ""), "Write a day like this: 2024-05-31");
  EXPECT_EQ(fault("", "tomorrow"), "Write a day like this: 2024-05-31");
  EXPECT_EQ(fault("2024-05-31", "2024-05-30"), "The last day comes before the first one");
}

TEST(ChatChoice, IsWhatAnExportTakes) {
  const ScanResult scan = scanOf({"Ana", "Bea"});
  EXPECT_EQ(ChatChoice().selection(scan), Selection());
  const ChatChoice choice{.leftOut = {scan.chats[0].jid, "of another scan"}, .since = "2024-05-01"};
  const Selection selection = choice.selection(scan);
  EXPECT_THAT(selection.notChats, ElementsAre(scan.chats[0].jid));
  EXPECT_EQ(selection.since, dayFromISO8601("2024-05-01"));
  EXPECT_EQ(selection.until, std::nullopt);
}

TEST(ChatChoice, AnExportNeedsAChatAndRightDays) {
  WizardScene scene;
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  scene.wizard().setDestination(scene.desktop);
  ASSERT_TRUE(scene.until([&] { return scene.state().canExport(); }));
  scene.wizard().showChats(true);
  scene.wizard().setFoundChatsIncluded(false);
  EXPECT_FALSE(scene.state().canExport());
  EXPECT_EQ(scene.state().startExportHint(), "Choose at least one chat to export");
  scene.wizard().searchChats("an");
  scene.wizard().setFoundChatsIncluded(true);
  EXPECT_EQ(scene.state().chatChoice.count(*scene.state().scanResult), 1);
  EXPECT_TRUE(scene.state().canExport());
  scene.wizard().setLastDay("soon");
  EXPECT_FALSE(scene.state().canExport());
  EXPECT_EQ(scene.state().startExportHint(), "Write a day like this: 2024-05-31");
}

TEST(ChatChoice, SpaceIsNotRefusedForWhatDaysMayLeaveOut) {
  WizardScene scene;
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  ExportState state = scene.state();
  state.destinationURL = "/somewhere";
  state.availableBytes = 1;
  EXPECT_EQ(state.hasEnoughSpace(), false);
  state.chatChoice.since = "2024-05-01";
  EXPECT_EQ(state.hasEnoughSpace(), std::nullopt);
  state.availableBytes = 1'000'000'000;
  EXPECT_EQ(state.hasEnoughSpace(), true);
}

TEST(ChatChoice, AnotherBackupBeginsWithAllChats) {
  WizardScene scene;
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  scene.wizard().setChatIncluded(QString::fromStdString(ana), false);
  scene.wizard().setFirstDay("2024-05-01");
  scene.wizard().goBackToBackup();
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("other", WizardTest::small(false, "other"))));
  EXPECT_EQ(scene.state().chatChoice, ChatChoice());
}

TEST(ChatChoice, AnExportTakesWhatWasChosen) {
  WizardScene scene;
  ASSERT_TRUE(scene.reachOptions(scene.addBackup("device")));
  scene.wizard().setChatIncluded(QString::fromStdString(ana), false);
  scene.wizard().setChatIncluded(QString::fromStdString(bea), false);
  scene.wizard().setChatIncluded(QString::fromStdString(bea), true);
  scene.wizard().setLastDay("2023-12-31");
  scene.wizard().setDestination(scene.desktop);
  ASSERT_TRUE(scene.until([&] { return scene.state().canExport(); }));
  scene.wizard().startExport();
  ASSERT_TRUE(scene.until([&] { return scene.state().step == WizardStep::done; }));
  EXPECT_EQ(scene.state().summary->copiedCount, 2) << "the group's and Bea's, whose document has no date";
  EXPECT_FALSE(std::filesystem::exists(scene.desktop / "messages" / "Ana"));
}

}  // namespace
