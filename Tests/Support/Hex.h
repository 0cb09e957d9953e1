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
    const std::size_t value = std::string_view("0123456789abcdef").find(c >= 'A' && c <= 'F' ? c + 32 : c);
    if (value == std::string_view::npos) throw std::runtime_error("This is no hexadecimal digit.");
    if (!isHalf) bytes.push_back(0);
    bytes.back() = static_cast<std::uint8_t>(bytes.back() << 4 | value);
    isHalf = !isHalf;
  }
  if (isHalf) throw std::runtime_error("A hexadecimal digit is left over.");
  return bytes;
}

}  // namespace Fixture
