#pragma once

#include <bit>
#include <cstdint>

#include "TidewellCore/Platform/Bytes.h"

// The running sum by which write-ahead logs and their indices are checked (the
// SQLite file format, section 4.2): over pairs of 32-bit words, in the byte
// order of the machine that wrote them.
struct SQLiteChecksum {
  std::endian order = std::endian::little;
  std::uint32_t first = 0;
  std::uint32_t second = 0;

  // Whole pairs; what is left over at the end does not count.
  void add(ByteView bytes) {
    for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
      first += word(&bytes[i], order) + second;
      second += word(&bytes[i + 4], order) + first;
    }
  }

  static std::uint32_t word(const std::uint8_t* bytes, std::endian order) {
    const std::uint32_t littleEndian =
        static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
        static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
    return order == std::endian::big ? __builtin_bswap32(littleEndian) : littleEndian;
  }
};
