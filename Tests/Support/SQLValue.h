#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Tests/Support/Bytes.h"

namespace Fixture {

// A column's value: NULL, a number, text, or a BLOB (`bytesOf("Ana")` for text that a database keeps as
// one).
using SQLValue = std::variant<std::monostate, std::int64_t, double, std::string, Bytes>;

// The columns of one row that are not NULL need be named only.
using SQLRow = std::vector<std::pair<std::string_view, SQLValue>>;

}  // namespace Fixture
