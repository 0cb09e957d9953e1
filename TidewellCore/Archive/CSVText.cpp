#include "TidewellCore/Archive/CSVText.h"

#include <algorithm>
#include <array>

namespace {

// The last four are the wide forms, which some programs read as the narrow ones.
constexpr std::array<std::string_view, 12> guarded{"=", "+", "-", "@", "\t", "\r", "\n", "'", "＝", "＋", "－", "＠"};

void appendCell(std::string& table, std::string_view cell) {
  if (cell.find_first_of(",\"\r\n") == std::string_view::npos) {
    table += cell;
    return;
  }
  table += '"';
  for (const char c : cell) {
    if (c == '"') table += '"';
    table += c;
  }
  table += '"';
}

}  // namespace

std::string CSVText::words(std::string_view text) {
  const bool isGuarded =
      std::ranges::any_of(guarded, [&](std::string_view beginning) { return text.starts_with(beginning); });
  return (isGuarded ? "'" : "") + std::string(text);
}

void CSVText::appendRow(std::string& table, const std::vector<std::string>& cells) {
  for (const std::string& cell : cells) {
    if (&cell != &cells.front()) table += ',';
    appendCell(table, cell);
  }
  table += "\r\n";
}
