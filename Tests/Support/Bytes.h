#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace Fixture {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// The bytes of a text, e.g. for a BLOB column that holds UTF-8.
inline Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

inline void append(Bytes& target, ByteView more) { target.insert(target.end(), more.begin(), more.end()); }

}  // namespace Fixture
