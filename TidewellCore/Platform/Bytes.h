#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// The same memory, read as bytes.
inline ByteView bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The same memory, read as text; nothing is validated.
inline std::string_view textOf(ByteView bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }
