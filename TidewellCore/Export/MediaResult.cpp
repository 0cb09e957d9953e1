#include "TidewellCore/Export/MediaResult.h"

MediaResult MediaResult::of(const SettledCopy& settled) {
  if (settled.failure) return {.place = settled.place};
  if (settled.wasThere) {
    return {.place = settled.place, .outcome = Outcome::wasThere, .isDoubtful = settled.isDoubtful};
  }
  return {.place = settled.place,
          .outcome = Outcome::copied,
          .copiedBytes = settled.copy->sourceSize,
          .isDoubtful = settled.isDoubtful};
}
