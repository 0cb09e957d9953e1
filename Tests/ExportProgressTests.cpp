#include "TidewellCore/ExportProgress.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "TidewellCore/Platform/RawValue.h"

namespace {

using Phase = ExportProgress::Phase;

constexpr std::array allPhases{Phase::preparing,          Phase::unlocking, Phase::readingChats, Phase::copyingMedia,
                               Phase::writingTranscripts, Phase::verifying, Phase::finished};

TEST(ExportProgress, FractionOfNothingIsZero) {
  EXPECT_EQ((ExportProgress{.completed = 0, .total = 0}.fraction()), 0.0);
  EXPECT_EQ((ExportProgress{.completed = 5, .total = 0}.fraction()), 0.0);
  EXPECT_EQ((ExportProgress{.completed = 5, .total = -1}.fraction()), 0.0);
}

TEST(ExportProgress, FractionIsTheShareOfWorkDone) {
  EXPECT_EQ((ExportProgress{.completed = 0, .total = 4}.fraction()), 0.0);
  EXPECT_EQ((ExportProgress{.completed = 1, .total = 4}.fraction()), 0.25);
  EXPECT_EQ((ExportProgress{.completed = 4, .total = 4}.fraction()), 1.0);
}

TEST(ExportProgress, FractionIsNotClamped) { EXPECT_EQ((ExportProgress{.completed = 3, .total = 2}.fraction()), 1.5); }

TEST(ExportProgress, OnlyTheFirstThreePhasesAreIndeterminate) {
  for (const Phase phase : {Phase::preparing, Phase::unlocking, Phase::readingChats}) {
    EXPECT_TRUE(ExportProgress{.phase = phase}.isIndeterminate()) << rawValue(phase);
  }
  for (const Phase phase : {Phase::copyingMedia, Phase::writingTranscripts, Phase::verifying, Phase::finished}) {
    EXPECT_FALSE(ExportProgress{.phase = phase}.isIndeterminate()) << rawValue(phase);
  }
}

TEST(ExportProgress, PhasesCarryTheirNamesAsRawValues) {
  EXPECT_EQ(rawValue(Phase::preparing), "preparing");
  EXPECT_EQ(rawValue(Phase::unlocking), "unlocking");
  EXPECT_EQ(rawValue(Phase::readingChats), "readingChats");
  EXPECT_EQ(rawValue(Phase::copyingMedia), "copyingMedia");
  EXPECT_EQ(rawValue(Phase::writingTranscripts), "writingTranscripts");
  EXPECT_EQ(rawValue(Phase::finished), "finished");
}

TEST(ExportProgress, PhasesAreReadBackFromTheirRawValues) {
  for (const Phase phase : allPhases) EXPECT_EQ(fromRawValue<Phase>(rawValue(phase)), phase);
}

TEST(ExportProgress, UnknownRawValuesGiveNoPhase) {
  EXPECT_EQ(fromRawValue<Phase>("copyingmedia"), std::nullopt);
  EXPECT_EQ(fromRawValue<Phase>("copyingMedia "), std::nullopt);
  EXPECT_EQ(fromRawValue<Phase>(""), std::nullopt);
}

TEST(ExportProgress, PhasesAreDeclaredInTheOrderOfARun) {
  EXPECT_TRUE(std::ranges::is_sorted(allPhases));
  EXPECT_EQ(rawValueTable(Phase{}).size(), allPhases.size());
}

TEST(ExportProgress, PhasesSayWhatIsGoingOn) {
  EXPECT_EQ(ExportProgress::title(Phase::preparing), "Preparing…");
  EXPECT_EQ(ExportProgress::title(Phase::unlocking), "Unlocking backup…");
  EXPECT_EQ(ExportProgress::title(Phase::readingChats), "Reading chats…");
  EXPECT_EQ(ExportProgress::title(Phase::copyingMedia), "Copying media");
  EXPECT_EQ(ExportProgress::title(Phase::writingTranscripts), "Writing transcripts");
  EXPECT_EQ(ExportProgress::title(Phase::finished), "Finished");
}

TEST(ExportProgress, EqualsByEveryField) {
  const ExportProgress progress{.phase = Phase::copyingMedia, .currentFileName = "a.jpg", .completed = 1, .total = 2};
  EXPECT_EQ(progress, ExportProgress(progress));
  ExportProgress other = progress;
  other.currentFileName = "b.jpg";
  EXPECT_NE(progress, other);
  other = progress;
  other.total = 3;
  EXPECT_NE(progress, other);
}

}  // namespace
