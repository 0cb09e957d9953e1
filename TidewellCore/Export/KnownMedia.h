#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "TidewellCore/ExportPlace.h"
#include "TidewellCore/Library/MediaLedger.h"

// A file that an export made of a medium.
struct KnownMedium {
  ExportPlace place;
  std::int64_t size = 0;    // bytes
  bool isDoubtful = false;  // it may be damaged, as its end in the backup was

  bool operator==(const KnownMedium&) const = default;
};

// What earlier exports made of the phone's medium with a path in the backup, null when nothing: good until the ledger
// that it is from changes. It was read from the destination: what it says counts as far as it stands there.
using KnownMedia = std::function<const KeptMedium*(std::string_view path)>;
