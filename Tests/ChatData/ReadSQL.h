#pragma once

#include <string>

#include "Tests/ChatData/ReadDatabases.h"

namespace Fixture {

// What `load` makes of a database of that very schema and content.
template <typename Row>
std::vector<Row> readSQL(const std::string& sql, bool (*load)(const std::filesystem::path&, std::vector<Row>&)) {
  const TemporaryDirectory folder;
  DatabaseWriter writer(Journal::rollback);
  writer.execute(sql);
  writeDatabase(writer.finish(), folder / "database.sqlite");
  std::vector<Row> rows;
  load(folder / "database.sqlite", rows);
  return rows;
}

}  // namespace Fixture
