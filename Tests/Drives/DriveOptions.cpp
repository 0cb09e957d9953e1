#include "Tests/Drives/DriveOptions.h"

#include <array>
#include <stdexcept>
#include <utility>

namespace Fixture {
namespace {

constexpr std::array<std::pair<const char*, bool DriveOptions::*>, 10> flags{{
    {"takes-every-name", &DriveOptions::takesEveryName},
    {"strips-dots", &DriveOptions::stripsDots},
    {"ignores-case", &DriveOptions::ignoresCase},
    {"composes-names", &DriveOptions::composesNames},
    {"ignores-width", &DriveOptions::ignoresWidth},
    {"refuses-dates", &DriveOptions::refusesDates},
    {"lacks-free-renaming", &DriveOptions::lacksFreeRenaming},
    {"loses-what-is-too-much", &DriveOptions::losesWhatIsTooMuch},
    {"writes-late", &DriveOptions::writesLate},
    {"fails-flushes", &DriveOptions::failsFlushes},
}};

constexpr std::array<std::pair<const char*, std::int64_t DriveOptions::*>, 4> numbers{{
    {"flush-takes", &DriveOptions::flushTakes},
    {"largest-file", &DriveOptions::largestFile},
    {"capacity", &DriveOptions::capacity},
    {"claimed-capacity", &DriveOptions::claimedCapacity},
}};

template <typename Table>
auto* memberOf(const Table& table, DriveOptions& options, const std::string& name) {
  for (const auto& [known, member] : table) {
    if (name == known) return &(options.*member);
  }
  return static_cast<decltype(&(options.*table[0].second))>(nullptr);
}

}  // namespace

std::vector<std::string> DriveOptions::arguments() const {
  std::vector<std::string> arguments;
  for (const auto& [name, member] : flags) arguments.push_back(std::string(name) + "=" + (this->*member ? "1" : "0"));
  for (const auto& [name, member] : numbers) {
    arguments.push_back(std::string(name) + "=" + std::to_string(this->*member));
  }
  return arguments;
}

DriveOptions DriveOptions::parse(const std::vector<std::string>& arguments) {
  DriveOptions options;
  for (const std::string& argument : arguments) {
    const auto equals = argument.find('=');
    if (equals == std::string::npos) throw std::invalid_argument(argument);
    const std::string name = argument.substr(0, equals);
    const std::int64_t value = std::stoll(argument.substr(equals + 1));
    if (bool* flag = memberOf(flags, options, name)) {
      *flag = value != 0;
    } else if (std::int64_t* number = memberOf(numbers, options, name)) {
      *number = value;
    } else {
      throw std::invalid_argument(argument);
    }
  }
  return options;
}

}  // namespace Fixture
