#include "Tidewell/Session/ExportState.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

namespace {

using Phase = ExportProgress::Phase;

SecretBytes secret(std::string_view text) { return {text.begin(), text.end()}; }

constexpr Date start = Date(std::chrono::duration<double>(1'700'000'000));
Date after(double seconds) { return start + std::chrono::duration<double>(seconds); }

// One photo of 1,000 bytes, two videos of 20,000 together; nothing else.
ScanResult scanned() {
  return {.chatCount = 2,
          .mediaFileCount = 3,
          .totalBytes = 21'000,
          .statsByKind = {{MediaKind::photos, {.count = 1, .byteCount = 1'000}},
                          {MediaKind::videos, {.count = 2, .byteCount = 20'000}}}};
}

// All that an export needs.
ExportState ready() {
  ExportState state;
  state.step = WizardStep::options;
  state.backupURL = "/backup";
  state.backupInfo = BackupInfo{.url = "/backup"};
  state.scanResult = scanned();
  state.destinationURL = "/destination";
  state.availableBytes = 1'000'000;
  return state;
}

void take(ExportState& state, const ExportProgress& progress, Date now) {
  state.progress = progress;
  state.phaseClock.take(progress, now.time_since_epoch());
}

struct Variation {
  const char* name;
  std::function<void(ExportState&)> change;
  bool expected;
};

TEST(ExportState, StartsAsAnEmptyFirstStep) {
  const ExportState state;
  EXPECT_EQ(state.step, WizardStep::backup);
  EXPECT_EQ(state.library, (BackupLibrarySnapshot{.access = BackupAccess::missing, .backups = {}}));
  EXPECT_EQ(state.includedKinds, MediaKinds(MediaKind::allCases.begin(), MediaKind::allCases.end()));
  EXPECT_EQ(state.includedKinds.size(), 5U);
  EXPECT_TRUE(state.exportTranscripts);
  EXPECT_FALSE(state.exportMessageFiles);
  for (const bool flag : {state.isRefreshingLibrary, state.isInspecting(), state.isScanning(), state.isExporting(),
                          state.dropTargeted, state.rememberBackupPassword, state.hasStoredPassword,
                          state.isUnlocking(), state.isCancellingUnlock(), state.focusBackupPassword}) {
    EXPECT_FALSE(flag);
  }
  EXPECT_FALSE(state.selectedBackupID || state.backupURL || state.backupInfo || state.scanResult ||
               state.destinationURL || state.progress || state.summary || state.errorMessage ||
               state.recoverySuggestion || state.availableBytes || state.exportStartedAt || state.storedPassword);
  EXPECT_TRUE(state.backupPassword.empty());
  EXPECT_FALSE(state.canContinueFromBackup() || state.canExport());
  EXPECT_EQ(state.selectedCount(), 0);
  EXPECT_EQ(state.selectedBytes(), 0);
  EXPECT_FALSE(state.hasEnoughSpace() || state.startExportHint() || state.remainingDescription(start));
}

TEST(WizardStep, HasTheNumbersOneToFour) {
  EXPECT_EQ(wizardStepFromRawValue(1), WizardStep::backup);
  EXPECT_EQ(wizardStepFromRawValue(2), WizardStep::options);
  EXPECT_EQ(wizardStepFromRawValue(3), WizardStep::exporting);
  EXPECT_EQ(wizardStepFromRawValue(4), WizardStep::done);
  for (const int other : {0, -1, 5, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(wizardStepFromRawValue(other), std::nullopt) << other;
  }
}

TEST(ExportState, TakesTheTypedPasswordBeforeTheStoredOne) {
  struct Case {
    const char* typed;
    std::optional<const char*> stored;
    std::optional<const char*> expected;
  };
  const std::vector<Case> cases{
      {"", {}, {}},
      {"  ", {}, {}},
      {" \t\r\n\v\f", {}, {}},
      {"\u00A0\u2003\u2028\u3000", {}, {}},
      {"", "kept", "kept"},
      {"   ", "kept", "kept"},
      {"typed", {}, "typed"},
      {"typed", "kept", "typed"},
      {"  typed \n", "kept", "typed"},
      {"two words", "kept", "two words"},
      {"\u2003ção 🔑\u00A0", {}, "ção 🔑"},
      {"", "  kept as it is ", "  kept as it is "},
  };
  for (const Case& c : cases) {
    ExportState state;
    state.backupPassword = secret(c.typed);
    if (c.stored) state.storedPassword = secret(*c.stored);
    const auto expected = c.expected ? std::optional<std::string_view>(*c.expected) : std::nullopt;
    EXPECT_EQ(state.currentPassword(), expected) << '"' << c.typed << "\" and " << c.stored.value_or("nothing");
  }
}

TEST(ExportState, TellsWhetherTheChatsCanBeRead) {
  const auto encrypted = [](ExportState& state) { state.backupInfo->isEncrypted = true; };
  const std::vector<Variation> cases{
      {"a plain backup", [](ExportState&) {}, true},
      {"no backup", [](ExportState& s) { s.backupInfo.reset(); }, false},
      {"inspecting", [](ExportState& s) { s.work = Inspecting(); }, false},
      {"scanning", [](ExportState& s) { s.work = Scanning(); }, false},
      {"unlocking", [](ExportState& s) { s.work = Scanning{.isUnlocking = true}; }, false},
      {"refreshing", [](ExportState& s) { s.isRefreshingLibrary = true; }, true},
      {"encrypted, no password", encrypted, false},
      {"encrypted, spaces typed",
       [&](ExportState& s) {
         encrypted(s);
         s.backupPassword = secret("   ");
       },
       false},
      {"encrypted, typed",
       [&](ExportState& s) {
         encrypted(s);
         s.backupPassword = secret("x");
       },
       true},
      {"encrypted, stored",
       [&](ExportState& s) {
         encrypted(s);
         s.storedPassword = secret("x");
       },
       true},
  };
  for (const Variation& c : cases) {
    ExportState state = ready();
    state.step = WizardStep::backup;
    c.change(state);
    EXPECT_EQ(state.canContinueFromBackup(), c.expected) << c.name;
  }
}

TEST(ExportState, CountsTheChosenKinds) {
  struct Case {
    MediaKinds kinds;
    std::int64_t count;
    std::int64_t bytes;
  };
  const std::vector<Case> cases{{{}, 0, 0},
                                {{MediaKind::photos}, 1, 1'000},
                                {{MediaKind::videos}, 2, 20'000},
                                {{MediaKind::documents}, 0, 0},
                                {{MediaKind::photos, MediaKind::videos, MediaKind::stickers}, 3, 21'000}};
  for (const Case& c : cases) {
    ExportState state = ready();
    state.includedKinds = c.kinds;
    EXPECT_EQ(state.selectedCount(), c.count);
    EXPECT_EQ(state.selectedBytes(), c.bytes);
    state.scanResult.reset();
    EXPECT_EQ(state.selectedCount(), 0);
    EXPECT_EQ(state.selectedBytes(), 0);
  }
}

TEST(ExportState, KeepsThreePercentOfTheSpaceFree) {
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  struct Case {
    std::int64_t needed;
    std::int64_t available;
    bool expected;
  };
  const std::vector<Case> cases{{0, 0, true},
                                {1, 0, false},
                                {1, 1, false},
                                {1, 2, true},
                                {100, 102, false},
                                {100, 103, true},
                                {20'000, 20'599, false},
                                {20'000, 20'600, true},
                                {largest, largest - 1, false}};
  for (const Case& c : cases) {
    ExportState state = ready();
    state.scanResult->statsByKind = {{MediaKind::photos, {.count = 1, .byteCount = c.needed}}};
    state.availableBytes = c.available;
    EXPECT_EQ(state.hasEnoughSpace(), c.expected) << c.needed << " of " << c.available;
  }
}

TEST(ExportState, DoesNotKnowTheSpaceBeforeItIsAsked) {
  for (const auto& forget : std::vector<std::function<void(ExportState&)>>{
           [](ExportState& s) { s.availableBytes.reset(); }, [](ExportState& s) { s.scanResult.reset(); },
           [](ExportState& s) { s.destinationURL.reset(); }}) {
    ExportState state = ready();
    ASSERT_EQ(state.hasEnoughSpace(), true);
    forget(state);
    EXPECT_EQ(state.hasEnoughSpace(), std::nullopt);
  }
}

TEST(ExportState, TellsWhetherTheExportCanStart) {
  const std::vector<Variation> cases{
      {"all is there", [](ExportState&) {}, true},
      {"no backup", [](ExportState& s) { s.backupInfo.reset(); }, false},
      {"no scan", [](ExportState& s) { s.scanResult.reset(); }, false},
      {"no destination", [](ExportState& s) { s.destinationURL.reset(); }, false},
      {"no kinds", [](ExportState& s) { s.includedKinds.clear(); }, false},
      {"one kind", [](ExportState& s) { s.includedKinds = {MediaKind::stickers}; }, true},
      {"no transcripts", [](ExportState& s) { s.exportTranscripts = false; }, true},
      {"exporting", [](ExportState& s) { s.work = Exporting(); }, false},
      {"scanning", [](ExportState& s) { s.work = Scanning(); }, false},
      {"too little space", [](ExportState& s) { s.availableBytes = 21'000; }, false},
      {"unknown space", [](ExportState& s) { s.availableBytes.reset(); }, true},
      {"encrypted", [](ExportState& s) { s.backupInfo->isEncrypted = true; }, false},
      {"encrypted, with a password",
       [](ExportState& s) {
         s.backupInfo->isEncrypted = true;
         s.storedPassword = secret("x");
       },
       true},
  };
  for (const Variation& c : cases) {
    ExportState state = ready();
    c.change(state);
    EXPECT_EQ(state.canExport(), c.expected) << c.name;
  }
}

struct HintCase {
  const char* name;
  std::function<void(ExportState&)> change;
  std::optional<std::string_view> hint;
  bool opensFolderPicker;
};

TEST(ExportState, HintsAtWhatIsMissing) {
  const std::string_view noDestination = "Choose where to save first";
  const std::string_view noKinds = "Choose at least one type to export";
  const std::string_view noSpace = "Not enough free space — choose another folder";
  const std::vector<HintCase> cases{
      {"nothing is missing", [](ExportState&) {}, {}, false},
      {"no destination", [](ExportState& s) { s.destinationURL.reset(); }, noDestination, true},
      {"no kinds", [](ExportState& s) { s.includedKinds.clear(); }, noKinds, false},
      {"no destination and no kinds",
       [](ExportState& s) {
         s.destinationURL.reset();
         s.includedKinds.clear();
       },
       noDestination, true},
      {"no space", [](ExportState& s) { s.availableBytes = 1; }, noSpace, true},
      // What is not wanted needs no space.
      {"no space and no kinds",
       [](ExportState& s) {
         s.availableBytes = 1;
         s.includedKinds.clear();
       },
       noKinds, false},
      {"unknown space", [](ExportState& s) { s.availableBytes.reset(); }, {}, false},
      {"another reason", [](ExportState& s) { s.work = Exporting(); }, {}, false},
  };
  for (const HintCase& c : cases) {
    ExportState state = ready();
    c.change(state);
    EXPECT_EQ(state.startExportHint(), c.hint) << c.name;
    EXPECT_EQ(state.startExportHintOpensFolderPicker(), c.opensFolderPicker) << c.name;
  }
}

TEST(ExportState, HintsOnTheOptionsStepAlone) {
  for (const WizardStep step : {WizardStep::backup, WizardStep::exporting, WizardStep::done}) {
    ExportState state = ready();
    state.step = step;
    state.destinationURL.reset();
    EXPECT_EQ(state.startExportHint(), std::nullopt);
  }
}

TEST(ExportState, EstimatesTheTimeLeftOnceMediaIsCopied) {
  struct Case {
    Phase phase;
    std::optional<std::string> expected;
  };
  const std::vector<Case> cases{{Phase::preparing, {}},
                                {Phase::unlocking, {}},
                                {Phase::readingChats, {}},
                                {Phase::copyingMedia, "About 30 seconds left"},
                                {Phase::writingTranscripts, "About 30 seconds left"},
                                {Phase::finished, "About 30 seconds left"}};
  for (const Case& c : cases) {
    ExportState state;
    take(state, {.phase = c.phase, .completed = 25, .total = 100}, start);
    EXPECT_EQ(state.remainingDescription(after(10)), c.expected) << static_cast<int>(c.phase);
  }
}

TEST(ExportState, DoesNotGuessTheTimeLeft) {
  ExportState state;
  EXPECT_EQ(state.remainingDescription(after(10)), std::nullopt) << "without progress";
  take(state, {.phase = Phase::copyingMedia, .completed = 25, .total = 100}, start);
  EXPECT_EQ(state.remainingDescription(after(0.5)), std::nullopt) << "too early";
  EXPECT_EQ(state.remainingDescription(after(-3600)), std::nullopt) << "the clock was set back";
  EXPECT_TRUE(state.remainingDescription(after(1e9))) << "the clock was set forward";
  take(state, {.phase = Phase::copyingMedia, .completed = 0, .total = 100}, start);
  EXPECT_EQ(state.remainingDescription(after(10)), std::nullopt) << "nothing done";
  take(state, {.phase = Phase::copyingMedia, .completed = 100, .total = 100}, start);
  EXPECT_EQ(state.remainingDescription(after(10)), std::nullopt) << "all done";
}

TEST(ExportState, ReckonsTheTimeLeftFromThePhasesStart) {
  ExportState state;
  take(state, {.phase = Phase::unlocking, .total = 1}, start);
  take(state, {.phase = Phase::copyingMedia, .completed = 0, .total = 100}, after(60));
  take(state, {.phase = Phase::copyingMedia, .completed = 50, .total = 100}, after(70));
  EXPECT_EQ(state.timeLeft(after(70)), (TimeLeft{.unit = TimeLeft::Unit::second, .count = 10}))
      << "what the unlocking took says nothing of the copying";
}

}  // namespace
