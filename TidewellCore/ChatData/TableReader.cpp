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
  if (!selected_.empty()) selected_ += ", ";
  const char* form = along.back == 0 ? "t{0}.{2}" : "coalesce(t{0}.{2}, t{1}.{2})";
  selected_ += fmt::format(fmt::runtime(form), along.number, along.back, *found);
  return {.place = count_++};
}

std::size_t TableReader::join(const Table& table, const std::string& condition) {
  tables_.push_back(table);
  tables_.back().condition = condition;
  return tables_.size() - 1;
}

TableReader::Along TableReader::along(const std::string& table, const char* reference, const char* back) {
  const Table joined = tableOf(table);
  const std::set<std::string>& own = tables_.front().columns;
  const std::size_t number = tables_.size();
  const bool hasBack = own.contains(key) && joined.columns.contains(back);
  const std::string backwards = fmt::format("{} = t0.{}", back, key);
  if (!own.contains(reference) || !joined.columns.contains(key)) {
    return {.number = join(hasBack ? joined : Table(), fmt::format("t{}.{}", number, backwards))};
  }
  const std::string forwards = fmt::format("t{}.{} = t0.{}", number, key, reference);
  if (!hasBack) return {.number = join(joined, forwards)};
  const std::string unlessOther = fmt::format("coalesce(t{}.{}, t0.{}) = t0.{}", number, back, key, key);
  join(joined, forwards + " AND " + unlessOther);
  join(joined, fmt::format("t{}.{} IS NULL AND t{}.{}", number, key, number + 1, backwards));
  return {.number = number, .back = number + 1};
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
