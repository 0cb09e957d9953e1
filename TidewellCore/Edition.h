#pragma once

#include <string_view>

namespace Edition {

// Another text for every other state of the core's sources, words and viewer. Pages that another edition
// wrote are written again.
std::string_view digest();

}  // namespace Edition
