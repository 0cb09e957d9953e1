#include "Tests/Support/SeededRandom.h"

#include "Tests/Support/TestCrypto.h"

namespace Fixture {

// SplitMix64, by Sebastiano Vigna (public domain).
std::uint64_t SeededRandom::next() {
  state_ += 0x9E3779B97F4A7C15U;
  std::uint64_t mixed = state_;
  mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
  mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
  return mixed ^ (mixed >> 31U);
}

std::size_t SeededRandom::below(std::size_t limit) { return static_cast<std::size_t>(next() % limit); }

Bytes SeededRandom::bytes(std::size_t count) {
  Bytes result(count);
  std::uint64_t word = 0;
  for (std::size_t index = 0; index < count; ++index) {
    if (index % 8 == 0) word = next();
    result[index] = static_cast<std::uint8_t>(word >> (8 * (index % 8)));
  }
  return result;
}

std::string SeededRandom::uuid() {
  std::string digits = hex(bytes(16));
  digits[12] = '4';
  for (const std::size_t position : {20U, 16U, 12U, 8U}) digits.insert(position, 1, '-');
  return digits;
}

}  // namespace Fixture
