#pragma once

#include <initializer_list>
#include <set>
#include <string>

#include "TidewellCore/Platform/SQLiteDB.h"

// Reads one table whose columns differ between versions of WhatsApp: a reader
// names the candidates of each field and gets the column that is there.
class TableReader {
 public:
  // A missing table has no columns. The database must outlive the reader.
  TableReader(const SQLiteDB& database, std::string table);

  // Selects the first candidate that is a column and returns its name, under
  // which rows then hold it; empty when there is none, and rows hold nothing then.
  std::string select(std::initializer_list<const char*> candidates);
  // One pass over the selected columns; `condition` is SQL that follows WHERE.
  void forEachRow(const SQLiteDB::RowHandler& row, const std::string& condition = {}) const;

 private:
  const SQLiteDB& database_;
  std::string table_;
  std::set<std::string> columns_;
  std::string selected_;
};

// Text as it is, and bytes that are valid UTF-8; anything else is absent.
std::optional<std::string> textOrUTF8(const SQLiteValue* value);
