#include "TidewellCore/Export/ExportTiming.h"

#include <fmt/format.h>

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

std::string phrase(std::int64_t count, const char* unit) {
  return count < 2 ? fmt::format("About 1 {} left", unit) : fmt::format("About {} {}s left", count, unit);
}

}  // namespace

std::optional<double> ExportTiming::remaining(double elapsed, std::int64_t completed, std::int64_t total) {
  if (completed < 1 || total <= completed || !(elapsed >= shortestElapsed)) return std::nullopt;
  const double rate = static_cast<double>(completed) / elapsed;
  if (!(rate > 0)) return std::nullopt;
  return static_cast<double>(total - completed) / rate;
}

std::string ExportTiming::formatRemaining(double seconds) {
  if (seconds >= hour) return phrase(rounded(seconds / hour), "hour");
  if (seconds >= minute) return phrase(rounded(seconds / minute), "minute");
  return phrase(rounded(seconds > 0 ? seconds : 0), "second");
}
