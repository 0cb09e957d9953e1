#include "Tidewell/Contents/BackupStepContent.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Application/Contents/ContentTestTexts.h"

namespace {

const L10n texts = americanTexts();

DiscoveredBackup listed(const char* path) { return {.info = {.url = path, .deviceName = "Ana's iPhone"}}; }

ExportState listing(std::vector<DiscoveredBackup> backups, BackupAccess access = BackupAccess::readable) {
  ExportState state;
  state.library = {.access = access, .backups = std::move(backups)};
  return state;
}

std::vector<std::string> selectedRows(const ExportState& state) {
  std::vector<std::string> ids;
  for (const BackupRowContent& row : BackupStepContent::of(state, texts).rows) {
    if (row.selected) ids.push_back(row.id.toStdString());
  }
  return ids;
}

TEST(BackupRowContent, TellsWhatIsKnown) {
  struct Case {
    std::optional<std::string> version;
    std::optional<Date> date;
    std::optional<std::int64_t> bytes;
    QString expected;
  };
  const std::vector<Case> cases{
      {{}, {}, {}, "Finder backup"},
      {"17.5.1", {}, {}, "iOS 17.5.1"},
      {{}, someDate, {}, someDateText},
      {{}, {}, 1'234'567'890, "1.2 GB"},
      {{}, {}, 0, "0 bytes"},
      {"17.5.1", someDate, {}, "iOS 17.5.1 · " + someDateText},
      {"17.5.1", {}, 1, "iOS 17.5.1 · 1 byte"},
      {{}, someDate, 64'000'000'000, someDateText + " · 64.0 GB"},
      {"17.5.1", someDate, 999, "iOS 17.5.1 · " + someDateText + " · 999 bytes"},
  };
  for (const Case& c : cases) {
    const DiscoveredBackup backup{.info = {.url = "/b", .iosVersion = c.version, .backupDate = c.date},
                                  .byteCount = c.bytes};
    EXPECT_EQ(BackupRowContent::of(backup, false, texts).detail.toStdString(), c.expected.toStdString());
  }
}

TEST(BackupRowContent, NamesTheDevice) {
  DiscoveredBackup backup{.info = {.url = "/b"}};
  EXPECT_EQ(BackupRowContent::of(backup, false, texts).name, "iPhone");
  for (const QString& name : unusualNames) {
    backup.info.deviceName = name.toStdString();
    EXPECT_EQ(BackupRowContent::of(backup, false, texts).name, name);
  }
}

TEST(BackupRowContent, FillsAVersionOnce) {
  const DiscoveredBackup backup{.info = {.url = "/b", .iosVersion = "%@ 1"}};
  EXPECT_EQ(BackupRowContent::of(backup, false, texts).detail, "iOS %@ 1");
}

TEST(BackupRowContent, NotesThatABackupIsEncrypted) {
  DiscoveredBackup backup{.info = {.url = "/b"}};
  EXPECT_EQ(BackupRowContent::of(backup, false, texts).note, "");
  backup.info.isEncrypted = true;
  EXPECT_EQ(BackupRowContent::of(backup, false, texts).note, "Encrypted — enter the Finder backup password");
}

TEST(BackupRowContent, SpeaksTheUsersLanguage) {
  const L10n other = L10n(StringTable({{"iPhone", "Telefone"}, {"iOS %@", "Sistema %@"}}), {.identifier = "de_DE"},
                          {.identifier = "UTC"});
  const auto row = BackupRowContent::of({.info = {.url = "/b", .iosVersion = "17"}, .byteCount = 1'500}, true, other);
  EXPECT_EQ(row.name, "Telefone");
  EXPECT_EQ(row.detail, "Sistema 17 · 1,5 kB");
}

TEST(BackupStepContent, ListsInTheLibrarysOrder) {
  ExportState state = listing({listed("/z"), listed("/a")});
  state.selectedBackupID = "/a";
  const auto content = BackupStepContent::of(state, texts);
  ASSERT_EQ(content.rows.size(), 2);
  EXPECT_EQ(content.rows[0].id, "/z");
  EXPECT_EQ(content.rows[1].id, "/a");
  EXPECT_FALSE(content.rows[0].selected);
  EXPECT_TRUE(content.rows[1].selected);
  EXPECT_TRUE(content.listsBackups);
  EXPECT_FALSE(content.showsHelp || content.isLooking || content.isAccessDenied);
}

TEST(BackupStepContent, PutsAChosenBackupFromElsewhereFirst) {
  ExportState state = listing({listed("/a")});
  state.backupURL = "/elsewhere";
  state.backupInfo = BackupInfo{.url = "/elsewhere", .deviceName = "Bea's", .isEncrypted = true};
  state.selectedBackupID = "/elsewhere";
  auto content = BackupStepContent::of(state, texts);
  ASSERT_EQ(content.rows.size(), 2);
  EXPECT_EQ(content.rows[0].name, "Bea's");
  EXPECT_EQ(content.rows[0].id, "/elsewhere");
  EXPECT_TRUE(content.rows[0].asksPassword && content.listsBackups);
  EXPECT_EQ(content.chosenRow, 0);
  EXPECT_EQ(selectedRows(state), std::vector<std::string>{"/elsewhere"});

  state.library.backups.clear();
  content = BackupStepContent::of(state, texts);
  EXPECT_EQ(content.rows.size(), 1);
  EXPECT_FALSE(content.listsBackups) << "it was not found on this computer";
  EXPECT_FALSE(content.showsHelp);
}

TEST(BackupStepContent, SelectsOneRowWhileAnotherBackupIsLookedInto) {
  ExportState state = listing({listed("/a")});
  state.backupInfo = BackupInfo{.url = "/elsewhere"};
  state.backupURL = "/a";
  state.selectedBackupID = "/a";
  state.work = Inspecting();
  EXPECT_EQ(selectedRows(state), std::vector<std::string>{"/a"});
  state.backupURL = "/third";
  state.selectedBackupID.reset();
  EXPECT_EQ(selectedRows(state), std::vector<std::string>{});
}

TEST(BackupStepContent, AsksForThePasswordOfTheChosenBackupAlone) {
  ExportState state = listing({listed("/a"), listed("/b")});
  state.backupInfo = BackupInfo{.url = "/a", .isEncrypted = true};
  state.selectedBackupID = "/a";
  auto content = BackupStepContent::of(state, texts);
  EXPECT_TRUE(content.rows[0].asksPassword);
  EXPECT_FALSE(content.rows[1].asksPassword);

  state.selectedBackupID = "/b";
  state.work = Inspecting();
  content = BackupStepContent::of(state, texts);
  EXPECT_EQ(content.chosenRow, 1);
  EXPECT_TRUE(content.isInspecting);
  EXPECT_FALSE(content.rows[0].asksPassword || content.rows[1].asksPassword) << "the other one is being read";

  state.backupInfo = BackupInfo{.url = "/b"};
  content = BackupStepContent::of(state, texts);
  EXPECT_FALSE(content.rows[1].asksPassword) << "it is not encrypted";
}

TEST(BackupStepContent, TellsWhyThereIsNothingToShow) {
  struct Case {
    BackupAccess access;
    bool isRefreshing;
    bool isLooking;
    bool showsHelp;
    bool isAccessDenied;
  };
  const std::vector<Case> cases{
      {BackupAccess::readable, false, false, true, false}, {BackupAccess::missing, false, false, true, false},
      {BackupAccess::denied, false, false, false, true},   {BackupAccess::readable, true, true, false, false},
      {BackupAccess::missing, true, true, false, false},   {BackupAccess::denied, true, true, false, true}};
  for (const Case& c : cases) {
    ExportState state = listing({}, c.access);
    state.isRefreshingLibrary = c.isRefreshing;
    const auto content = BackupStepContent::of(state, texts);
    EXPECT_EQ(content.isLooking, c.isLooking);
    EXPECT_EQ(content.showsHelp, c.showsHelp);
    EXPECT_EQ(content.isAccessDenied, c.isAccessDenied);
    EXPECT_FALSE(content.listsBackups);
  }
}

TEST(BackupStepContent, KeepsItsHelpWhileItIsLookedAgain) {
  ExportState state = listing({}, BackupAccess::missing);
  state.isRefreshingLibrary = true;
  state.hasReadLibrary = true;
  EXPECT_TRUE(BackupStepContent::of(state, texts).showsHelp);
  EXPECT_FALSE(BackupStepContent::of(state, texts).isLooking) << "the window's footer says it then";
}

TEST(BackupStepContent, DoesNotLookAgainOverAList) {
  ExportState state = listing({listed("/a")});
  state.isRefreshingLibrary = true;
  EXPECT_FALSE(BackupStepContent::of(state, texts).isLooking);
}

TEST(BackupStepContent, TellsOfThePasswordWithoutShowingIt) {
  ExportState state;
  EXPECT_FALSE(BackupStepContent::of(state, texts).hasTypedPassword);
  state.backupPassword = {'a'};
  state.hasStoredPassword = true;
  state.rememberBackupPassword = true;
  state.focusBackupPassword = true;
  const auto content = BackupStepContent::of(state, texts);
  EXPECT_TRUE(content.hasTypedPassword && content.hasStoredPassword && content.rememberPassword &&
              content.wantsPasswordFocus);
  EXPECT_EQ(content.chosenRow, -1);
}

}  // namespace
