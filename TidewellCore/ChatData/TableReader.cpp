#include "TidewellCore/ChatData/TableReader.h"

#include <fmt/format.h>

#include <algorithm>

#include "TidewellCore/Platform/Text.h"

namespace {

constexpr const char* key = "Z_PK";

}  // namespace

TableReader::TableReader(const SQLiteDB& database, std::string table) : database_(database) {
  tables_.push_back(tableOf(std::move(table)));
}

TableReader::Table TableReader::tableOf(std::string name) const {
  Table table{.name = std::move(name)};
  if (database_.tableExists(table.name)) table.columns = database_.columns(table.name);
  return table;
}

TableReader::Column TableReader::select(Along along, std::initializer_list<const char*> candidates) {
  const std::set<std::string>& columns = tables_[along.number].columns;
  const auto* found = std::ranges::find_if(
      candidates, [&](const char* candidate) { return columns.contains(Text::uppercasedASCII(candidate)); });
  if (found == candidates.end()) return {};
  selected_ += fmt::format("{}t{}.{}", selected_.empty() ? "" : ", ", along.number, *found);
  return {.place = count_++};
}

TableReader::Along TableReader::along(const std::string& table, const char* reference, const char* back) {
  Table joined = tableOf(table);
  const std::size_t number = tables_.size();
  const std::set<std::string>& own = tables_.front().columns;
  if (own.contains(reference) && joined.columns.contains(key)) {
    joined.condition = fmt::format("t{}.{} = t0.{}", number, key, reference);
  } else if (own.contains(key) && joined.columns.contains(back)) {
    joined.condition = fmt::format("t{}.{} = t0.{}", number, back, key);
  } else {
    joined.columns.clear();
  }
  tables_.push_back(std::move(joined));
  return {.number = number};
}

void TableReader::forEachRow(const SQLiteDB::RowViewHandler& row) const {
  if (selected_.empty() || !tables_.front().isRead()) return;
  std::string sql = fmt::format("SELECT {} FROM {} t0", selected_, tables_.front().name);
  for (std::size_t number = 1; number < tables_.size(); ++number) {
    const Table& table = tables_[number];
    if (table.isRead()) sql += fmt::format(" LEFT JOIN {} t{} ON {}", table.name, number, table.condition);
  }
  database_.forEachRow(sql, row);
}

std::optional<std::string_view> textOrUTF8(const SQLiteRowView& row, TableReader::Column column) {
  if (row.type(column.place) == SQLiteRowView::Type::text) return row.text(column.place);
  const auto blob = row.blob(column.place);
  return blob && Text::isValid(textOf(*blob)) ? std::optional(textOf(*blob)) : std::nullopt;
}
