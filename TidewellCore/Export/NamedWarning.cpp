#include "TidewellCore/Export/NamedWarning.h"

#include <fmt/format.h>

std::optional<std::string> NamedWarning::of(const std::vector<std::string>& names, std::string_view rest) {
  if (names.empty()) return std::nullopt;
  const std::string others = names.size() == 1 ? " is" : fmt::format(" and {} more are", names.size() - 1);
  return fmt::format("“{}”{} {}", names.front(), others, rest);
}
