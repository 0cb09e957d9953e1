#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Tests/Drives/DriveOptions.h"

// Which names a drive of the tests takes, and which are one to it. Written from
// FAT's own rules, without a line of the core.
namespace Fixture::DriveNames {

// As the drive stores it; absent for a name that it refuses.
std::optional<std::string> stored(std::string_view name, const DriveOptions& options);

// Two names with the same key are one.
std::string key(std::string_view name, const DriveOptions& options);

}  // namespace Fixture::DriveNames
