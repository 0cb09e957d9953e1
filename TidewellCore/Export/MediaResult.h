#pragma once

#include <cstdint>

#include "TidewellCore/Export/SettledCopy.h"

// What came of a planned copy when the plan was carried out.
struct MediaResult {
  enum class Outcome { failed, wasThere, copied };

  ExportPlace place;  // where its file stands; of one that failed, where it was to
  Outcome outcome = Outcome::failed;
  std::int64_t copiedBytes = 0;
  bool isDoubtful = false;  // its end in the backup is not as that of a whole file

  bool hasFailed() const { return outcome == Outcome::failed; }

  static MediaResult of(const SettledCopy& settled);

  bool operator==(const MediaResult&) const = default;
};
