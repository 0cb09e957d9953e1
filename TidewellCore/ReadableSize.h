#pragma once

#include <cstdint>
#include <string_view>

// A number of bytes as file managers show it: in decimal units, with one decimal from 1000 on.
struct ReadableSize {
  double amount = 0;
  int decimals = 0;  // 0 for bytes
  std::string_view unit = "bytes";

  static ReadableSize of(std::int64_t bytes);

  bool operator==(const ReadableSize&) const = default;
};
