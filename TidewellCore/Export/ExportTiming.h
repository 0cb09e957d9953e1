#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ExportTiming {

// The seconds that the rest of the copy phase takes at the speed so far;
// absent while there is too little to tell. `elapsed` is in seconds.
std::optional<double> remaining(double elapsed, std::int64_t completed, std::int64_t total);

// "About 2 minutes left". The unit is chosen before rounding. An infinite time
// is a fault of the program.
std::string formatRemaining(double seconds);

}  // namespace ExportTiming
