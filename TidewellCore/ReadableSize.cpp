#include "TidewellCore/ReadableSize.h"

#include <array>

ReadableSize ReadableSize::of(std::int64_t bytes) {
  constexpr std::array<std::string_view, 6> units{"kB", "MB", "GB", "TB", "PB", "EB"};
  constexpr double step = 1000;
  if (bytes < 1000) return {.amount = static_cast<double>(bytes), .unit = bytes == 1 ? "byte" : "bytes"};
  double amount = static_cast<double>(bytes) / step;
  std::size_t unit = 0;
  // 999.95 would be written as 1000.0.
  for (; amount >= 999.95 && unit + 1 < units.size(); ++unit) amount /= step;
  return {.amount = amount, .decimals = 1, .unit = units[unit]};
}
