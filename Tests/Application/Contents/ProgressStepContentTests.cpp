#include "Tidewell/Contents/ProgressStepContent.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Application/Contents/ContentTestTexts.h"

namespace {

using Phase = ExportProgress::Phase;

const L10n texts = americanTexts();

ExportState exporting(const ExportProgress& progress) {
  ExportState state;
  state.step = WizardStep::exporting;
  state.phaseClock.take(progress, someDate.time_since_epoch());
  state.progress = progress;
  return state;
}

ProgressStepContent after(double seconds, const ExportProgress& progress, const L10n& language = texts) {
  return ProgressStepContent::of(exporting(progress), language, someDate + std::chrono::duration<double>(seconds));
}

TEST(ProgressStepContent, SaysNothingTwice) {
  const ExportProgress unlocking{.phase = Phase::unlocking, .currentFileName = "Unlocking backup…", .total = 1};
  EXPECT_EQ(after(1, unlocking).title, "Unlocking backup…");
  EXPECT_EQ(after(1, unlocking).fileName, "");
}

TEST(ProgressStepContent, TellsTheTimeLeftInTheUsersLanguage) {
  const L10n portuguese(StringTable({{"About %lld seconds left", "Faltam cerca de %lld segundos"}}),
                        {.identifier = "pt_BR"}, {.identifier = "UTC"});
  const ExportProgress copying{.phase = Phase::copyingMedia, .completed = 25, .total = 100};
  EXPECT_EQ(after(10, copying).remaining, "About 30 seconds left");
  EXPECT_EQ(after(10, copying, portuguese).remaining, "Faltam cerca de 30 segundos");
}

TEST(ProgressStepContent, IsTitledByThePhase) {
  struct Case {
    Phase phase;
    const char* title;
    bool isIndeterminate;
  };
  const std::vector<Case> cases{{Phase::preparing, "Preparing…", true},
                                {Phase::unlocking, "Unlocking backup…", true},
                                {Phase::readingChats, "Reading chats…", true},
                                {Phase::copyingMedia, "Copying media", false},
                                {Phase::writingTranscripts, "Writing transcripts", false}};
  for (const Case& c : cases) {
    const auto content = after(0, {.phase = c.phase, .completed = 1, .total = 4});
    EXPECT_EQ(content.title.toStdString(), c.title);
    EXPECT_EQ(content.isIndeterminate, c.isIndeterminate) << c.title;
    EXPECT_EQ(content.fraction, 0.25);
    EXPECT_EQ(content.count.toStdString(), c.isIndeterminate ? "" : "1 of 4");
  }
}

TEST(ProgressStepContent, IsFullInTheEndWhateverThereWasToDo) {
  const auto content = after(0, {.phase = Phase::finished, .completed = 0, .total = 1});
  EXPECT_EQ(content.title, "Finished");
  EXPECT_FALSE(content.isIndeterminate);
  EXPECT_EQ(content.fraction, 1);
  EXPECT_EQ(content.count, "");
}

TEST(ProgressStepContent, StartsBeforeAnythingIsReported) {
  EXPECT_EQ(ProgressStepContent::of({}, texts, someDate), (ProgressStepContent{.title = "Starting…"}));
}

TEST(ProgressStepContent, TellsFilesAndTimeLeft) {
  const ProgressStepContent expected{.title = "Copying media",
                                     .isIndeterminate = false,
                                     .fraction = 0.5,
                                     .count = "1,500 of 3,000",
                                     .fileName = "2023-03-05 Ana.jpg",
                                     .remaining = "About 2 minutes left",
                                     .announcement = "Copying media, 50%"};
  EXPECT_EQ(
      after(
          120,
          {.phase = Phase::copyingMedia, .currentFileName = "2023-03-05 Ana.jpg", .completed = 1'500, .total = 3'000}),
      expected);
}

TEST(ProgressStepContent, DoesNotGuessTheTimeLeft) {
  EXPECT_EQ(after(120, {.phase = Phase::readingChats, .completed = 1, .total = 2}).remaining, "");
  EXPECT_EQ(after(0.1, {.phase = Phase::copyingMedia, .completed = 1, .total = 2}).remaining, "");
}

TEST(ProgressStepContent, LeavesNamesAsTheyAre) {
  for (const QString& name : unusualNames) {
    EXPECT_EQ(after(1, {.phase = Phase::copyingMedia, .currentFileName = name.toStdString(), .total = 1}).fileName,
              name);
  }
  EXPECT_EQ(after(1, {.phase = Phase::copyingMedia, .currentFileName = "cut \xf0\x9f", .total = 1}).fileName,
            QStringLiteral("cut \uFFFD"));
}

TEST(ProgressStepContent, SpeaksTheUsersLanguage) {
  const L10n other(StringTable({{"Copying media", "A copiar"}, {"%lld of %lld", "%2$lld, dos quais %1$lld"}}),
                   {.identifier = "pt_BR"}, {.identifier = "UTC"});
  const auto content = after(0, {.phase = Phase::copyingMedia, .completed = 1'000, .total = 2'000}, other);
  EXPECT_EQ(content.title, "A copiar");
  EXPECT_EQ(content.count, "2.000, dos quais 1.000");
}

}  // namespace
