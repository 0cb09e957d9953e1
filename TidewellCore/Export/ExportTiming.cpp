#include "TidewellCore/Export/ExportTiming.h"

#include <algorithm>
#include <array>
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

// In the order of the units.
constexpr std::array<ExportTiming::Words, 3> table{{{.one = "About 1 second left", .many = "About %lld seconds left"},
                                                    {.one = "About 1 minute left", .many = "About %lld minutes left"},
                                                    {.one = "About 1 hour left", .many = "About %lld hours left"}}};

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

const ExportTiming::Words& ExportTiming::words(TimeLeft::Unit unit) { return table[static_cast<std::size_t>(unit)]; }

std::string ExportTiming::format(const TimeLeft& time) {
  constexpr std::string_view placeholder = "%lld";
  const Words& form = words(time.unit);
  if (time.count == 1) return std::string(form.one);
  std::string text(form.many);
  return text.replace(text.find(placeholder), placeholder.size(), std::to_string(time.count));
}
