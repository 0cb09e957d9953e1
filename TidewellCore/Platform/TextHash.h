#pragma once

#include <functional>
#include <string_view>

// Lets an unordered map of texts be asked with a view.
struct TextHash {
  using is_transparent = void;

  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
