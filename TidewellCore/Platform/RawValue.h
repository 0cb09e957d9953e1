#pragma once

#include <optional>
#include <string_view>

// Text raw values of enumerations. Each enumeration has one table beside it,
//   constexpr std::array<std::pair<E, std::string_view>, N> rawValueTable(E);
// which these two read in either direction.

template <typename Enumeration>
constexpr std::string_view rawValue(Enumeration value) {
  for (const auto& [entry, text] : rawValueTable(value)) {
    if (entry == value) return text;
  }
  return {};
}

// Absent when no case has that raw value; letter case counts.
template <typename Enumeration>
constexpr std::optional<Enumeration> fromRawValue(std::string_view raw) {
  for (const auto& [entry, text] : rawValueTable(Enumeration{})) {
    if (text == raw) return entry;
  }
  return std::nullopt;
}
