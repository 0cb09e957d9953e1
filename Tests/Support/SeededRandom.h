#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Support/Bytes.h"

namespace Fixture {

// Random numbers that are the same for a seed on every machine and standard library.
// Good enough for fixtures, no secret may come from it.
class SeededRandom {
 public:
  explicit SeededRandom(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next();
  // From 0 up to, not including, `limit`, which must not be 0.
  std::size_t below(std::size_t limit);
  // True in `percent` of a hundred calls.
  bool chance(std::size_t percent) { return below(100) < percent; }
  Bytes bytes(std::size_t count);
  // In the form "1b9d6bcd-bbfd-4b2d-9b5d-ab8dfbbd4bed".
  std::string uuid();

  template <typename Container>
  const auto& pick(const Container& choices) {
    return choices[below(choices.size())];
  }

 private:
  std::uint64_t state_;
};

}  // namespace Fixture
