#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Tests/Fuzz/FuzzTargets.h"

// libFuzzer's door; the build says which target stands behind it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto target = std::ranges::find(fuzzTargets(), TIDEWELL_FUZZ_TARGET, &FuzzTarget::name);
  if (target == fuzzTargets().end()) std::abort();
  target->run({data, size});
  return 0;
}
