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
  return add(along, candidates, "{}");
}

TableReader::Column TableReader::selectBytes(Along along, const char* candidate, std::size_t most) {
  // SQLite knows the length of a blob before it reads it.
  return add(along, {candidate}, fmt::format("CASE WHEN length({{0}}) <= {} THEN {{0}} END", most));
}

TableReader::Column TableReader::add(Along along, std::initializer_list<const char*> candidates,
                                     const std::string& form) {
  const std::set<std::string>& columns = tables_[along.number].columns;
  const auto* found = std::ranges::find_if(
      candidates, [&](const char* candidate) { return columns.contains(Text::uppercasedASCII(candidate)); });
  if (found == candidates.end()) return {};
  if (!selected_.empty()) selected_ += ", ";
  const auto columnOf = [&](std::size_t number) {
    return fmt::format(fmt::runtime(form), fmt::format("t{}.{}", number, *found));
  };
  selected_ += along.back == 0 ? columnOf(along.number)
                               : fmt::format("coalesce({}, {})", columnOf(along.number), columnOf(along.back));
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
  // Without an index of theirs SQLite makes one, of the keys alone when nothing else is asked of that table.
  join(joined, fmt::format("t{}.{} IS NULL AND t{}.{}", number, key, number + 1, backwards));
  join(joined, fmt::format("t{}.{} = t{}.{}", number + 2, key, number + 1, key));
  return {.number = number, .back = number + 2};
}

void TableReader::forEachRow(const SQLiteDB::RowViewHandler& row) const {
  if (selected_.empty() || !isThere()) return;
  std::string sql = fmt::format("SELECT {} FROM {} t0", selected_, tables_.front().name);
  for (std::size_t number = 1; number < tables_.size(); ++number) {
    const Table& table = tables_[number];
    if (table.isRead()) sql += fmt::format(" LEFT JOIN {} t{} ON {}", table.name, number, table.condition);
  }
  database_.forEachRow(sql, row);
}

bool areThere(std::initializer_list<TableReader::Column> columns) {
  return std::ranges::all_of(columns, &TableReader::Column::isThere);
}

std::optional<std::string_view> textOrUTF8(const SQLiteRowView& row, TableReader::Column column) {
  if (row.type(column.place) == SQLiteRowView::Type::text) return row.text(column.place);
  const auto blob = row.blob(column.place);
  return blob && Text::isValid(textOf(*blob)) ? std::optional(textOf(*blob)) : std::nullopt;
}
