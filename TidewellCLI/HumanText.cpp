#include "TidewellCLI/HumanText.h"

#include <fmt/format.h>

#include <algorithm>

#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/ReadableSize.h"

namespace {

std::string padded(const std::string& text, std::size_t width, HumanText::Alignment alignment) {
  const std::string blanks(width - std::min(width, Text::displayWidth(text)), ' ');
  return alignment == HumanText::Alignment::right ? blanks + text : text + blanks;
}

std::string line(const std::vector<HumanText::Column>& columns, const std::vector<std::size_t>& widths,
                 const HumanText::Row& cells) {
  std::string text;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) text += "  ";
    text += padded(cells[i], widths[i], columns[i].alignment);
  }
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

std::string HumanText::size(std::int64_t bytes) {
  const auto [amount, decimals, unit] = ReadableSize::of(bytes);
  return fmt::format("{:.{}f} {}", amount, decimals, unit);
}

std::string HumanText::counted(std::int64_t count, std::string_view thing) {
  return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

std::string HumanText::date(const std::optional<Date>& date) {
  if (!date) return "unknown";
  return DateFormatter("yyyy-MM-dd HH:mm", TimeZone::current(), Locale{}).string(*date);
}

std::string HumanText::safe(std::string_view text) {
  std::u32string scalars = Text::scalars(text);
  std::erase_if(scalars, Text::isDirectionalMark);
  std::ranges::replace_if(scalars, Text::isControl, U'\uFFFD');
  return Text::fromScalars(scalars);
}

std::string HumanText::name(std::string_view text) {
  constexpr std::size_t widest = 44;
  const std::string whole = safe(text);
  return Text::displayWidth(whole) <= widest ? whole : fitted(whole, widest - 1) + "…";
}

std::string HumanText::fitted(std::string text, std::size_t width) {
  for (std::size_t count = width; Text::displayWidth(text) > width; --count) text = Text::firstCharacters(text, count);
  return text;
}

std::vector<std::string> HumanText::table(const std::vector<Column>& columns, const std::vector<Row>& rows) {
  Row titles;
  for (const Column& column : columns) titles.push_back(column.title);
  std::vector<std::size_t> widths(columns.size());
  const auto widen = [&](const Row& cells) {
    for (std::size_t i = 0; i < columns.size(); ++i) widths[i] = std::max(widths[i], Text::displayWidth(cells[i]));
  };
  widen(titles);
  std::ranges::for_each(rows, widen);
  std::vector<std::string> lines{line(columns, widths, titles)};
  for (const Row& row : rows) lines.push_back(line(columns, widths, row));
  return lines;
}
