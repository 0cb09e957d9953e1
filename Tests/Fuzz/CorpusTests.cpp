#include <gtest/gtest.h>

#include <ostream>

#include "Tests/Fuzz/FuzzTargets.h"
#include "Tests/Fuzz/SeedCorpus.h"

// What a test is called, instead of the bytes of its parameter.
void PrintTo(const FuzzTarget& target, std::ostream* stream) { *stream << target.name; }

namespace {

// What fuzzing begins with, and what it once found, as ordinary tests.
class FuzzCorpusTest : public testing::TestWithParam<FuzzTarget> {};

TEST_P(FuzzCorpusTest, IsReadWithoutAFault) {
  const auto seeds = seedCorpus(GetParam().name);
  EXPECT_FALSE(seeds.empty());
  for (const auto& seed : seeds) GetParam().run(seed);
}

TEST_P(FuzzCorpusTest, IsReadWithoutAFaultWhenCutAnywhere) {
  for (const auto& seed : seedCorpus(GetParam().name)) {
    const std::size_t step = seed.size() / 500 + 1;
    for (std::size_t size = 0; size < seed.size(); size += step) GetParam().run(ByteView(seed).first(size));
  }
}

TEST_P(FuzzCorpusTest, IsReadWithoutAFaultWhenAnyByteIsWrong) {
  for (auto seed : seedCorpus(GetParam().name)) {
    const std::size_t step = seed.size() / 500 + 1;
    for (std::size_t i = 0; i < seed.size(); i += step) {
      for (const std::uint8_t change : Bytes{0x01, 0x80, 0xFF}) {
        seed[i] = static_cast<std::uint8_t>(seed[i] ^ change);
        GetParam().run(seed);
        seed[i] = static_cast<std::uint8_t>(seed[i] ^ change);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Parsers, FuzzCorpusTest, testing::ValuesIn(fuzzTargets().begin(), fuzzTargets().end()),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
