#include "TidewellCore/Export/PhaseClock.h"

void PhaseClock::take(const ExportProgress& progress, Seconds now) {
  if (!phaseStart_ || last_.phase != progress.phase) phaseStart_ = now;
  last_ = progress;
}

PhaseClock::Seconds PhaseClock::elapsed(Seconds now) const { return phaseStart_ ? now - *phaseStart_ : Seconds(0); }

std::optional<TimeLeft> PhaseClock::timeLeft(Seconds now) const {
  if (last_.phase < ExportProgress::Phase::copyingMedia) return std::nullopt;
  const auto seconds = ExportTiming::remaining(elapsed(now).count(), last_.completed, last_.total);
  return seconds ? std::optional(ExportTiming::timeLeft(*seconds)) : std::nullopt;
}
