#include "Tests/Torture/Fault.h"

#include <array>
#include <cerrno>
#include <vector>

namespace Torture {
namespace {

constexpr int shortCount = -1;  // as the library has it

struct Kind {
  const char* call;
  std::vector<int> errors;
};

const std::array kinds = std::to_array<Kind>({{"open", {EIO, EACCES, ENOSPC}},
                                              {"read", {EIO, EINTR, shortCount}},
                                              {"pread", {EIO, EINTR, shortCount}},
                                              {"write", {EIO, ENOSPC, EDQUOT, EINTR, shortCount}},
                                              {"copy_file_range", {EIO, ENOSPC, EINTR, shortCount}},
                                              {"rename", {EIO, ENOSPC, EACCES}},
                                              {"mkdir", {EIO, ENOSPC, EACCES}},
                                              {"fsync", {EIO, ENOSPC}},
                                              {"close", {EIO, ENOSPC}},
                                              {"statvfs", {EIO}},
                                              {"unlink", {EIO, EACCES}},
                                              {"utimensat", {EIO, EACCES}},
                                              {"stat", {EIO, EACCES}},
                                              {"readdir", {EIO}}});

const std::array places = std::to_array<std::string>({"", "", "out", "device", "temporary"});

}  // namespace

Fault Fault::random(Fixture::SeededRandom& random) {
  const Kind& kind = random.pick(kinds);
  // Early calls as often as late ones, of which there are many more.
  const std::size_t number = 1 + random.below(std::size_t{1} << random.below(12));
  const int error = random.pick(kind.errors);
  // A call that is interrupted or short for ever is no fault of this world.
  const bool goesOn = error != EINTR && error != shortCount && random.chance(25);
  return {.plan = std::string(kind.call) + ":" + std::to_string(number) + (goesOn ? "+:" : ":") + std::to_string(error),
          .below = random.pick(places)};
}

bool Fault::isPossible() {
#ifdef __SANITIZE_ADDRESS__
  return false;
#else
  return true;
#endif
}

void Fault::putInto(CommandLine& program) const {
  program.set("LD_PRELOAD", TIDEWELL_FAULT_LIBRARY);
  program.set("TIDEWELL_FAULT", plan);
  program.set("TIDEWELL_FAULT_BELOW", (program / below).string());
}

}  // namespace Torture
