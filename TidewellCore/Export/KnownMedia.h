#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "TidewellCore/ExportPlace.h"

// A file that an export made of a medium.
struct KnownMedium {
  ExportPlace place;
  std::int64_t size = 0;  // bytes

  bool operator==(const KnownMedium&) const = default;
};

// Lets a map of texts be asked with a view.
struct TextHash {
  using is_transparent = void;

  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

// What earlier exports made of the phone's media, by the path in the backup. It was read from the
// destination: what it says counts as far as it stands there.
using KnownMedia = std::unordered_map<std::string, KnownMedium, TextHash, std::equal_to<>>;
