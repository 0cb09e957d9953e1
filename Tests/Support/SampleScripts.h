#pragma once

#include <span>
#include <string_view>

namespace Fixture {

// Screenplays as parseScreenplay reads them.
std::span<const std::string_view> scriptsFromHome();
std::span<const std::string_view> scriptsFromAbroad();

}  // namespace Fixture
