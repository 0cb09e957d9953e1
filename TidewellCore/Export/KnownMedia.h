#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>

#include "TidewellCore/ExportPlace.h"
#include "TidewellCore/Platform/TextHash.h"

// A file that an export made of a medium.
struct KnownMedium {
  ExportPlace place;
  std::int64_t size = 0;  // bytes

  bool operator==(const KnownMedium&) const = default;
};

// What earlier exports made of the phone's media, by the path in the backup. It was read from the
// destination: what it says counts as far as it stands there.
using KnownMedia = std::unordered_map<std::string, KnownMedium, TextHash, std::equal_to<>>;
