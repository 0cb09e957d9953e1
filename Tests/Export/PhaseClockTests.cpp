#include "TidewellCore/Export/PhaseClock.h"

#include <gtest/gtest.h>

namespace {

using Phase = ExportProgress::Phase;
using Seconds = PhaseClock::Seconds;

ExportProgress progress(Phase phase, std::int64_t completed = 0, std::int64_t total = 100) {
  return {.phase = phase, .completed = completed, .total = total};
}

TEST(PhaseClock, KnowsNothingBeforeTheFirstProgress) {
  const PhaseClock clock;
  EXPECT_EQ(clock.elapsed(Seconds(1000)), Seconds(0));
  EXPECT_EQ(clock.timeLeft(Seconds(1000)), std::nullopt);
}

TEST(PhaseClock, MeasuresEachPhaseFromItsFirstProgress) {
  PhaseClock clock;
  clock.take(progress(Phase::preparing), Seconds(1000));
  clock.take(progress(Phase::preparing), Seconds(1003));
  EXPECT_EQ(clock.elapsed(Seconds(1005)), Seconds(5));
  clock.take(progress(Phase::copyingMedia), Seconds(1010));
  EXPECT_EQ(clock.elapsed(Seconds(1010)), Seconds(0));
  EXPECT_EQ(clock.elapsed(Seconds(1012.5)), Seconds(2.5));
}

TEST(PhaseClock, EstimatesFromThePhasesOwnTimeAlone) {
  PhaseClock clock;
  clock.take(progress(Phase::preparing), Seconds(0));
  clock.take(progress(Phase::copyingMedia), Seconds(600));
  EXPECT_EQ(clock.timeLeft(Seconds(610)), std::nullopt) << "nothing is copied yet";
  clock.take(progress(Phase::copyingMedia, 25), Seconds(610));
  EXPECT_EQ(clock.timeLeft(Seconds(610)), (TimeLeft{.unit = TimeLeft::Unit::second, .count = 30}));
  EXPECT_EQ(clock.timeLeft(Seconds(640)), (TimeLeft{.unit = TimeLeft::Unit::minute, .count = 2}));
  clock.take(progress(Phase::writingTranscripts, 1, 2), Seconds(700));
  EXPECT_EQ(clock.timeLeft(Seconds(703)), (TimeLeft{.unit = TimeLeft::Unit::second, .count = 3}));
}

TEST(PhaseClock, EstimatesNothingBeforeTheMediaAreCopied) {
  for (const Phase phase : {Phase::preparing, Phase::unlocking, Phase::readingChats}) {
    PhaseClock clock;
    clock.take(progress(phase, 50), Seconds(0));
    EXPECT_EQ(clock.timeLeft(Seconds(10)), std::nullopt);
  }
}

}  // namespace
