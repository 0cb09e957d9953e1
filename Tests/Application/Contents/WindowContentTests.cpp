#include "Tidewell/Contents/WindowContent.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Application/Contents/ContentTestTexts.h"

namespace {

const L10n texts = americanTexts();

WindowContent contentOf(const ExportState& state) { return WindowContent::of(state, texts); }

TEST(WindowContent, NamesTheStep) {
  const std::vector<std::pair<WizardStep, const char*>> captions{
      {WizardStep::backup, "Step 1 of 3 — Choose a backup"},
      {WizardStep::options, "Step 2 of 3 — Choose what to export"},
      {WizardStep::exporting, "Step 3 of 3 — Exporting"},
      {WizardStep::done, "Done"}};
  for (const auto& [step, caption] : captions) {
    ExportState state;
    state.step = step;
    EXPECT_EQ(contentOf(state).stepCaption.toStdString(), caption);
    EXPECT_EQ(contentOf(state).step, static_cast<int>(step));
  }
}

TEST(WindowContent, TellsThatBackupsAreLookedForAgain) {
  ExportState state;
  state.isRefreshingLibrary = true;
  EXPECT_EQ(contentOf(state).busyText, "") << "the first time the step says it";
  state.hasReadLibrary = true;
  EXPECT_EQ(contentOf(state).busyText, "Looking for iPhone backups…");
  state.backupInfo = BackupInfo{};
  EXPECT_EQ(contentOf(state).busyText, "") << "there is a backup to show";
}

TEST(WindowContent, AsksWhetherToStop) {
  ExportState state;
  EXPECT_FALSE(contentOf(state).asksToStop);
  for (const StopQuestion question : {StopQuestion::cancel, StopQuestion::close}) {
    state.stopQuestion = question;
    EXPECT_TRUE(contentOf(state).asksToStop);
  }
}

TEST(WindowContent, NamesWhatCouldNotBeOpened) {
  ExportState state;
  EXPECT_EQ(contentOf(state).unopenedPath, "");
  state.unopenedPath = "/kept/index.html";
  EXPECT_EQ(contentOf(state).unopenedPath, "/kept/index.html");
}

TEST(WindowContent, TellsWhatIsBeingRead) {
  ExportState state;
  EXPECT_EQ(contentOf(state).busyText, "");
  state.work = Scanning();
  EXPECT_EQ(contentOf(state).busyText, "Reading chats…");
  state.work = Inspecting();
  EXPECT_EQ(contentOf(state).busyText, "Reading this backup…");
}

TEST(WindowContent, TellsWhyTheFirstStepCannotBeLeft) {
  ExportState state;
  EXPECT_EQ(contentOf(state).continueHint, "Choose a backup first");
  state.work = Inspecting();
  EXPECT_EQ(contentOf(state).continueHint, "Reading this backup…");
  state.work = Idle();
  state.backupInfo = BackupInfo{.url = "/b", .isEncrypted = true};
  EXPECT_EQ(contentOf(state).continueHint, "Enter the backup password first");
  state.backupPassword = SecretBytes{'x'};
  EXPECT_EQ(contentOf(state).continueHint, "");
  state.work = Scanning();
  EXPECT_EQ(contentOf(state).continueHint, "Reading chats…");
}

TEST(WindowContent, HintsAtWhatIsMissing) {
  ExportState state;
  EXPECT_EQ(contentOf(state).hint, "") << "not on the first step";
  state.step = WizardStep::options;
  state.backupInfo = BackupInfo{.url = "/b"};
  state.scanResult = ScanResult{.statsByKind = {{MediaKind::photos, {.count = 1, .byteCount = 1'000}}}};
  EXPECT_EQ(contentOf(state).hint, "Choose where to save first");
  EXPECT_TRUE(contentOf(state).hintOpensFolderPicker);
  state.destinationURL = "/d";
  EXPECT_EQ(contentOf(state).hint, "");
  EXPECT_TRUE(contentOf(state).canExport);
  EXPECT_FALSE(contentOf(state).hintOpensFolderPicker);
  state.availableBytes = 10;
  EXPECT_EQ(contentOf(state).hint, "Not enough free space — choose another folder");
  EXPECT_TRUE(contentOf(state).hintOpensFolderPicker);
  EXPECT_FALSE(contentOf(state).canExport);
  state.includedKinds.clear();
  EXPECT_EQ(contentOf(state).hint, "Choose at least one type to export");
  EXPECT_FALSE(contentOf(state).hintOpensFolderPicker);
}

TEST(WindowContent, JoinsAnErrorAndItsAdvice) {
  struct Case {
    std::optional<std::string> message;
    std::optional<std::string> suggestion;
    bool hasError;
    const char* text;
  };
  const std::vector<Case> cases{{{}, {}, false, ""},
                                {{}, "Try again.", false, ""},  // dismissed
                                {"Bad luck.", {}, true, "Bad luck."},
                                {"Bad luck.", "Try again.", true, "Bad luck.\n\nTry again."},
                                {"Bad luck.", "One.\n\nTwo.", true, "Bad luck.\n\nOne.\n\nTwo."}};
  for (const Case& c : cases) {
    ExportState state;
    state.errorMessage = c.message;
    state.recoverySuggestion = c.suggestion;
    EXPECT_EQ(contentOf(state).hasError, c.hasError);
    EXPECT_EQ(contentOf(state).errorText.toStdString(), c.text);
  }
}

TEST(WindowContent, OffersTheSamePersonWhileTheRefusalShows) {
  ExportState state;
  EXPECT_FALSE(contentOf(state).offersSamePerson);
  state.errorMessage = "These chats belong to +55 11 90000-1111. Choose another folder for this phone.";
  EXPECT_FALSE(contentOf(state).offersSamePerson) << "the case counts, not the words";
  state.isForeignArchive = true;
  EXPECT_TRUE(contentOf(state).offersSamePerson);
  state.errorMessage.reset();
  EXPECT_FALSE(contentOf(state).offersSamePerson) << "dismissed";
}

TEST(WindowContent, LeavesTheWordsOfAnErrorAsTheyAre) {
  ExportState state;
  for (const QString& name : unusualNames) {
    state.errorMessage = "Cannot write to “/" + name.toStdString() + "”.";
    EXPECT_EQ(contentOf(state).errorText, "Cannot write to “/" + name + "”.");
  }
  state.errorMessage = "/no text \xff";
  EXPECT_EQ(contentOf(state).errorText, QStringLiteral("/no text \uFFFD"));
}

TEST(WindowContent, PassesOnWhatEnablesTheButtons) {
  ExportState state;
  EXPECT_FALSE(contentOf(state).canContinue || contentOf(state).isUnlocking || contentOf(state).isCancellingUnlock ||
               contentOf(state).dropTargeted || contentOf(state).canOpenArchive || contentOf(state).canExport);
  state.backupInfo = BackupInfo{.url = "/b"};
  EXPECT_TRUE(contentOf(state).canContinue);
  state.work = Scanning{.isUnlocking = true, .isCancelling = true};
  state.dropTargeted = true;
  EXPECT_TRUE(contentOf(state).isUnlocking && contentOf(state).isCancellingUnlock && contentOf(state).dropTargeted);
  EXPECT_FALSE(contentOf(state).canContinue);
  state.summary = ExportSummary{};
  EXPECT_FALSE(contentOf(state).canOpenArchive) << "no archive was written";
  state.summary->archiveIndexURL = "/d/index.html";
  EXPECT_TRUE(contentOf(state).canOpenArchive);
}

TEST(WindowContent, SpeaksTheUsersLanguage) {
  const L10n other = americanTexts(StringTable({{"Done", "Pronto"}, {"Choose where to save first", "Escolha"}}));
  ExportState state;
  state.step = WizardStep::done;
  EXPECT_EQ(WindowContent::of(state, other).stepCaption, "Pronto");
  state.step = WizardStep::options;
  EXPECT_EQ(WindowContent::of(state, other).hint, "Escolha");
}

}  // namespace
