#include "TidewellCore/ChatData/TableReader.h"

#include <algorithm>

#include "TidewellCore/Platform/Text.h"

TableReader::TableReader(const SQLiteDB& database, std::string table) : database_(database), table_(std::move(table)) {
  if (database.tableExists(table_)) columns_ = database.columns(table_);
}

std::string TableReader::select(std::initializer_list<const char*> candidates) {
  const auto* found = std::ranges::find_if(
      candidates, [&](const char* candidate) { return columns_.contains(Text::uppercasedASCII(candidate)); });
  if (found == candidates.end()) return {};
  // Without a name of its own a result column is called as the table declares it, in any letter case.
  const std::string name = *found;
  selected_ += (selected_.empty() ? "" : ", ") + name + " AS " + name;
  return name;
}

void TableReader::forEachRow(const SQLiteDB::RowHandler& row, const std::string& condition) const {
  if (selected_.empty()) return;
  const std::string where = condition.empty() ? "" : " WHERE " + condition;
  database_.query("SELECT " + selected_ + " FROM " + table_ + where, {}, row);
}

std::optional<std::string> textOrUTF8(const SQLiteValue* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* text = std::get_if<std::string>(value)) return *text;
  const auto* blob = std::get_if<Bytes>(value);
  if (blob == nullptr || !Text::isValid(textOf(*blob))) return std::nullopt;
  return std::string(textOf(*blob));
}
