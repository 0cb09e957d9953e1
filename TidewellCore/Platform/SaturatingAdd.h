#pragma once

#include <cstdint>
#include <limits>

// A sum of sizes that hostile numbers cannot overflow: it stays at the largest
// number instead. A negative `bytes` adds nothing.
inline std::int64_t saturatingAdd(std::int64_t sum, std::int64_t bytes) {
  if (bytes <= 0) return sum;
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  return sum > largest - bytes ? largest : sum + bytes;
}
