#include "TidewellCore/ChatData/TableReader.h"

#include <algorithm>

#include "TidewellCore/Platform/Text.h"

TableReader::TableReader(const SQLiteDB& database, std::string table) : database_(database), table_(std::move(table)) {
  if (database.tableExists(table_)) columns_ = database.columns(table_);
}

TableReader::Column TableReader::select(std::initializer_list<const char*> candidates) {
  const auto* found = std::ranges::find_if(
      candidates, [&](const char* candidate) { return columns_.contains(Text::uppercasedASCII(candidate)); });
  if (found == candidates.end()) return {};
  selected_ += (selected_.empty() ? "" : ", ") + std::string(*found);
  return {.place = count_++};
}

void TableReader::forEachRow(const SQLiteDB::RowViewHandler& row) const {
  if (!selected_.empty()) database_.forEachRow("SELECT " + selected_ + " FROM " + table_, row);
}

std::optional<std::string_view> textOrUTF8(const SQLiteRowView& row, TableReader::Column column) {
  if (row.type(column.place) == SQLiteRowView::Type::text) return row.text(column.place);
  const auto blob = row.blob(column.place);
  return blob && Text::isValid(textOf(*blob)) ? std::optional(textOf(*blob)) : std::nullopt;
}
