#pragma once

#include "TidewellCore/Platform/Bytes.h"

// The unsigned number that all bytes of `bytes`, most significant first, stand
// for. At most 8 bytes; the caller has checked that they are there.
inline std::uint64_t readBigEndian(ByteView bytes) {
  std::uint64_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}
