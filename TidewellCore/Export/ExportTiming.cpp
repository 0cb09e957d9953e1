#include "TidewellCore/Export/ExportTiming.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "TidewellCore/Platform/Precondition.h"

namespace {

// Earlier estimates are too noisy to be shown.
constexpr double shortestElapsed = 0.8;
constexpr double minute = 60;
constexpr double hour = 3600;

// Half away from zero.
std::int64_t rounded(double value) {
  const double whole = std::round(value);
  precondition(std::abs(whole) < 0x1p63, "a time left must fit a 64-bit integer");
  return static_cast<std::int64_t>(whole);
}

TimeLeft atLeastOne(TimeLeft::Unit unit, double count) {
  return {.unit = unit, .count = std::max<std::int64_t>(rounded(count), 1)};
}

const char* nameOf(TimeLeft::Unit unit) {
  switch (unit) {
    case TimeLeft::Unit::second:
      return "second";
    case TimeLeft::Unit::minute:
      return "minute";
    case TimeLeft::Unit::hour:
      return "hour";
  }
  return "";
}

}  // namespace

std::optional<double> ExportTiming::remaining(double elapsed, std::int64_t completed, std::int64_t total) {
  if (completed < 1 || total <= completed || !(elapsed >= shortestElapsed)) return std::nullopt;
  const double rate = static_cast<double>(completed) / elapsed;
  if (!(rate > 0)) return std::nullopt;
  return static_cast<double>(total - completed) / rate;
}

TimeLeft ExportTiming::timeLeft(double seconds) {
  if (seconds >= hour) return atLeastOne(TimeLeft::Unit::hour, seconds / hour);
  if (seconds >= minute) return atLeastOne(TimeLeft::Unit::minute, seconds / minute);
  return atLeastOne(TimeLeft::Unit::second, seconds > 0 ? seconds : 0);
}

std::string ExportTiming::formatRemaining(double seconds) { return format(timeLeft(seconds)); }

std::string ExportTiming::format(const TimeLeft& time) {
  return fmt::format("About {} {}{} left", time.count, nameOf(time.unit), time.count == 1 ? "" : "s");
}
