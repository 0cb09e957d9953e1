#pragma once

#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include "TidewellCore/Platform/SQLiteDB.h"

// Reads one table whose columns differ between versions of WhatsApp: a reader
// names the candidates of each field and gets the column that is there. Rows
// of other tables that belong to its rows can be read along with them.
class TableReader {
 public:
  // The place of a column in the rows that are read; it is NULL in all of them when it is not there.
  struct Column {
    int place = -1;

    bool isThere() const { return place >= 0; }
  };
  // A table that is read along: by its key and, where that finds no row, back from its rows.
  struct Along {
    std::size_t number = 0;
    std::size_t back = 0;  // 0 where there is one way alone
  };

  // A missing table has no columns. The database must outlive the reader.
  TableReader(const SQLiteDB& database, std::string table);

  bool isThere() const { return tables_.front().isRead(); }

  // Selects the first candidate that is a column.
  Column select(std::initializer_list<const char*> candidates) { return select({}, candidates); }
  Column select(Along along, std::initializer_list<const char*> candidates);
  // Selects bytes, which are NULL when there are more than these; more are not even read.
  Column selectBytes(Along along, const char* candidate, std::size_t most);
  // Reads the row whose key the column `reference` of this table holds, unless it says that it belongs to another row;
  // where there is none, those whose column `back` holds the key of this table's row. A row comes once with each.
  Along along(const std::string& table, const char* reference, const char* back);
  // One pass over the selected columns.
  void forEachRow(const SQLiteDB::RowViewHandler& row) const;

 private:
  struct Table {
    std::string name;
    std::set<std::string> columns;
    std::string condition;  // by which its rows belong to those of the first

    bool isRead() const { return !columns.empty(); }
  };

  Table tableOf(std::string name) const;
  Column add(Along along, std::initializer_list<const char*> candidates, const std::string& form);
  std::size_t join(const Table& table, const std::string& condition);

  const SQLiteDB& database_;
  std::vector<Table> tables_;  // the table itself first
  std::string selected_;
  int count_ = 0;
};

// Whether a table has all columns that are due in it.
bool areThere(std::initializer_list<TableReader::Column> columns);

// Text as it is, and bytes that are valid UTF-8; anything else is absent.
std::optional<std::string_view> textOrUTF8(const SQLiteRowView& row, TableReader::Column column);
