#pragma once

#include <string>

#include "Tests/ChatData/ReadDatabases.h"

namespace Fixture {

// What `load` makes of a database of that very schema and content.
template <typename Load>
auto readSQL(const std::string& sql, Load load) {
  const TemporaryDirectory folder;
  DatabaseWriter writer(Journal::rollback);
  writer.execute(sql);
  writeDatabase(writer.finish(), folder / "database.sqlite");
  return load(folder / "database.sqlite");
}

}  // namespace Fixture
