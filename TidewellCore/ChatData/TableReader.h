#pragma once

#include <initializer_list>
#include <set>
#include <string>

#include "TidewellCore/Platform/SQLiteDB.h"

// Reads one table whose columns differ between versions of WhatsApp: a reader
// names the candidates of each field and gets the column that is there.
class TableReader {
 public:
  // The place of a column in the rows that are read; it is NULL in all of them when it is not there.
  struct Column {
    int place = -1;

    bool isThere() const { return place >= 0; }
  };

  // A missing table has no columns. The database must outlive the reader.
  TableReader(const SQLiteDB& database, std::string table);

  // Selects the first candidate that is a column.
  Column select(std::initializer_list<const char*> candidates);
  // One pass over the selected columns.
  void forEachRow(const SQLiteDB::RowViewHandler& row) const;

 private:
  const SQLiteDB& database_;
  std::string table_;
  std::set<std::string> columns_;
  std::string selected_;
  int count_ = 0;
};

// Text as it is, and bytes that are valid UTF-8; anything else is absent.
std::optional<std::string_view> textOrUTF8(const SQLiteRowView& row, TableReader::Column column);
