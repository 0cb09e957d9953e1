#include "Tests/Support/OpaqueName.h"

#include <cstdint>
#include <string_view>

#include "Tests/Support/Bytes.h"

namespace Fixture {

namespace {

std::string base64(const Bytes& bytes) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t index = 0; index + 2 < bytes.size(); index += 3) {
    const std::uint32_t group = static_cast<std::uint32_t>(bytes[index]) << 16U |
                                static_cast<std::uint32_t>(bytes[index + 1]) << 8U | bytes[index + 2];
    for (const unsigned shift : {18U, 12U, 6U, 0U}) text += digits[group >> shift & 63U];
  }
  return text;
}

}  // namespace

std::string opaqueName(SeededRandom& random) {
  Bytes message = {0x0A, 0x1C};
  append(message, random.bytes(28));
  return base64(message);
}

}  // namespace Fixture
