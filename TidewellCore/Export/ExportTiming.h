#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// A time that is still to pass, in the one unit in which people would tell it.
struct TimeLeft {
  enum class Unit { second, minute, hour };

  Unit unit = Unit::second;
  std::int64_t count = 1;  // at least 1

  bool operator==(const TimeLeft&) const = default;
};

namespace ExportTiming {

// The seconds that the rest of the copy phase takes at the speed so far;
// absent while there is too little to tell. `elapsed` is in seconds.
std::optional<double> remaining(double elapsed, std::int64_t completed, std::int64_t total);

// The unit is chosen before rounding, so that 59.6 seconds are 60. An infinite
// time is a fault of the program.
TimeLeft timeLeft(double seconds);
// A time left in English.
struct Words {
  std::string_view one;   // "About 1 minute left"
  std::string_view many;  // the same with "%lld" for the number
};
const Words& words(TimeLeft::Unit unit);
// "About 2 minutes left".
std::string format(const TimeLeft& time);
std::string formatRemaining(double seconds);

}  // namespace ExportTiming
