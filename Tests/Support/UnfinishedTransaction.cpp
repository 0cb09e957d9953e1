#include "Tests/Support/UnfinishedTransaction.h"

#include <sqlite3.h>

#include <memory>
#include <stdexcept>

#include "Tests/Support/TemporaryDirectory.h"

void Fixture::leaveUnfinished(const std::filesystem::path& file, const std::string& statement) {
  const std::string journal = file.native() + "-journal";
  sqlite3* opened = nullptr;
  const int result = sqlite3_open(file.c_str(), &opened);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> handle(opened, sqlite3_close);
  if (result != SQLITE_OK || sqlite3_exec(opened, ("BEGIN; " + statement).c_str(), nullptr, nullptr, nullptr) != 0 ||
      sqlite3_db_cacheflush(opened) != SQLITE_OK) {
    throw std::runtime_error("No transaction was begun in " + file.string());
  }
  const Bytes changed = readFile(file);
  const Bytes undoing = readFile(journal);
  handle.reset();
  writeFile(file, ByteView(changed));
  writeFile(journal, ByteView(undoing));
}
