#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/DateText.h"

// How records read on a terminal.
namespace HumanText {

// "3 bytes", "1.2 MB": decimal units, as file managers show them.
std::string size(std::int64_t bytes);
// "1 chat", "2 chats".
std::string counted(std::int64_t count, std::string_view thing);
// "2024-05-01 14:03" in this computer's time zone; "unknown" without a date.
std::string date(const std::optional<Date>& date);
// Text from a backup, without the control characters that would steer the terminal
// and the directional marks that would turn the line around.
std::string safe(std::string_view text);
// The same, cut with "…" to fit a column.
std::string name(std::string_view text);
// At most as many terminal columns as `width`.
std::string fitted(std::string text, std::size_t width);

enum class Alignment { left, right };
struct Column {
  std::string title;
  Alignment alignment = Alignment::left;
};
using Row = std::vector<std::string>;
// A heading and a line for each row, columns two blanks apart.
std::vector<std::string> table(const std::vector<Column>& columns, const std::vector<Row>& rows);

}  // namespace HumanText
