#include <fmt/core.h>
#include <sqlite3.h>

#include <cstdlib>
#include <string>

#include "Benchmarks/Measure.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"

namespace {

constexpr int messageCount = 1'000'000;
constexpr const char* columns = "Z_PK, ZCHATSESSION, ZMESSAGEDATE, ZTEXT, ZISFROMME, ZFROMJID, ZPUSHNAME, ZGROUPMEMBER";

sqlite3* openDatabase(const std::string& path) {
  sqlite3* database = nullptr;
  if (sqlite3_open(path.c_str(), &database) != SQLITE_OK) std::abort();
  return database;
}

void execute(sqlite3* database, const std::string& sql) {
  if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return;
  fmt::print(stderr, "{}\n", sqlite3_errmsg(database));
  std::abort();
}

// 1,000 chats, texts of 10 to 90 characters, a medium with every fifth message.
void writeMessages(const std::string& path) {
  sqlite3* database = openDatabase(path);
  const std::string numbers =
      fmt::format("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {}) ", messageCount);
  execute(database, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; BEGIN");
  execute(database,
          "CREATE TABLE ZWACHATSESSION (Z_PK INTEGER PRIMARY KEY, ZCONTACTJID VARCHAR, ZPARTNERNAME VARCHAR)");
  execute(database,
          "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZCHATSESSION INTEGER, ZGROUPMEMBER INTEGER, "
          "ZISFROMME INTEGER, ZMESSAGEDATE TIMESTAMP, ZFROMJID VARCHAR, ZPUSHNAME VARCHAR, ZTEXT VARCHAR)");
  execute(database, "CREATE TABLE ZWAMEDIAITEM (Z_PK INTEGER PRIMARY KEY, ZMESSAGE INTEGER, ZMEDIALOCALPATH VARCHAR)");
  execute(database, numbers +
                        "INSERT INTO ZWACHATSESSION SELECT i, (5511900000000 + i) || '@s.whatsapp.net', 'Chat ' || i "
                        "FROM n WHERE i <= 1000");
  execute(database, numbers +
                        "INSERT INTO ZWAMESSAGE SELECT i, 1 + i % 1000, NULL, i % 2, 600000000 + i * 60, "
                        "(5511900000000 + i % 1000) || '@s.whatsapp.net', 'Ana Maria', "
                        "substr('The quick brown fox jumps over the lazy dog and then it goes home to sleep "
                        "until the morning comes', 1, 10 + i % 81) FROM n");
  execute(database, numbers +
                        "INSERT INTO ZWAMEDIAITEM SELECT i, i * 5, 'Media/' || (5511900000000 + i * 5 % 1000) || "
                        "'@s.whatsapp.net/a/b/ab12cd34-0000-4000-8000-' || printf('%012d', i) || '.jpg' FROM n "
                        "WHERE i * 5 <= " +
                        std::to_string(messageCount));
  execute(database, "COMMIT");
  sqlite3_close(database);
}

// What SQLite alone takes to hand the same columns over.
void scan(const std::string& path) {
  sqlite3* database = openDatabase(path);
  sqlite3_stmt* statement = nullptr;
  const std::string sql = std::string("SELECT ") + columns + " FROM ZWAMESSAGE";
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) std::abort();
  std::int64_t bytes = 0;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      if (sqlite3_column_text(statement, i) != nullptr) bytes += sqlite3_column_bytes(statement, i);
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  if (bytes == 0) std::abort();
}

}  // namespace

void measureMessages(const std::filesystem::path& folder) {
  const std::string path = (folder / "ChatStorage.sqlite").string();
  writeMessages(path);
  const std::int64_t memory = Measure::peakMemory([&] { ChatStorageReader::load(path); });
  fmt::print("{:<34} {} bytes a message\n", "Memory for 1,000,000 messages:", memory / messageCount);
  const auto comparison = Measure::compare([&] { ChatStorageReader::load(path); }, [&] { scan(path); });
  Measure::report("Reading them:", "a bare scan", comparison);
}
