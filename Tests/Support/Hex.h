#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "Tests/Support/Bytes.h"

namespace Fixture {

/// The bytes of hexadecimal digits; blanks and line breaks between them do not count.
inline Bytes fromHex(std::string_view digits) {
  Bytes bytes;
  bool isHalf = false;
  for (const char c : digits) {
    if (c == ' ' || c == '\n') continue;
    const std::size_t place = std::string_view("0123456789abcdefABCDEF").find(c);
    if (place == std::string_view::npos) throw std::runtime_error("This is no hexadecimal digit.");
    const std::size_t value = place < 16 ? place : place - 6;
    if (isHalf) {
      bytes.back() = static_cast<std::uint8_t>(bytes.back() * 16u + value);
    } else {
      bytes.push_back(static_cast<std::uint8_t>(value));
    }
    isHalf = !isHalf;
  }
  if (isHalf) throw std::runtime_error("A hexadecimal digit is left over.");
  return bytes;
}

}  // namespace Fixture
