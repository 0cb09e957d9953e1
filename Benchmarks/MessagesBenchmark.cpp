#include <fmt/core.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Benchmarks/Measure.h"
#include "Tests/Support/ChatSchema.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

namespace {

namespace fs = std::filesystem;

constexpr int messageCount = 1'000'000;

sqlite3* openDatabase(const fs::path& path) {
  sqlite3* database = nullptr;
  if (sqlite3_open(path.c_str(), &database) != SQLITE_OK) std::abort();
  return database;
}

void execute(sqlite3* database, const std::string& sql) {
  if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return;
  fmt::print(stderr, "{}\n", sqlite3_errmsg(database));
  std::abort();
}

constexpr const char* people = R"sql(
INSERT INTO ZWACHATSESSION (Z_PK, ZCONTACTJID, ZPARTNERNAME)
  SELECT i, CASE WHEN i % 4 THEN (5511900000000 + i) || '@s.whatsapp.net' ELSE (120363000000000000 + i) || '@g.us' END,
  'Chat ' || i FROM n WHERE i <= 807;
)sql";

// The text under a reply of field 5 (the original's stanza ID), 6 (its sender) and 19.1 (its words).
constexpr const char* replyMetadata =
    "CAST(x'2A14' || printf('3A%018d', i - 7) || x'321B' || (5511900000000 + i % 807) || '@s.whatsapp.net' || "
    "x'9A01180A16' || 'That is what they said' AS BLOB)";
// Who has received and read it; nobody shows that.
constexpr const char* receipts =
    "CAST(x'121C0A0C' || printf('%012d', i) || x'10' || x'0118022002' || 'receipts!' AS BLOB)";

// Messages of a busy phone as they came, those of all chats mixed: one in five with a medium, one in eight an answer.
std::string messages(int first, int last) {
  const std::string numbers =
      fmt::format("WITH RECURSIVE n(i) AS (SELECT {} UNION ALL SELECT i + 1 FROM n WHERE i < {}) ", first, last);
  const std::string text =
      "substr('The quick brown fox jumps over the lazy dog and then it goes home to sleep until the morning comes', "
      "1, 10 + i % 81)";
  return numbers +
         "INSERT INTO ZWAMESSAGE (Z_PK, Z_ENT, Z_OPT, ZFLAGS, ZGROUPEVENTTYPE, ZISFROMME, ZMESSAGESTATUS, "
         "ZMESSAGETYPE, ZSORT, ZSTARRED, ZCHATSESSION, ZMEDIAITEM, ZMESSAGEINFO, ZMESSAGEDATE, ZSENTDATE, ZFROMJID, "
         "ZPUSHNAME, ZSTANZAID, ZTEXT, ZTOJID) SELECT i, 9, 2, 0, 2 * (i % 2), i % 2, 8, "
         "CASE WHEN i % 5 THEN 0 ELSE 1 END, i, 0, 1 + (i * 7919) % 807, "
         "CASE WHEN i % 5 = 0 OR i % 8 = 1 THEN i END, CASE WHEN i % 2 THEN i END, 400000000 + i * 60.5, 400000000 + i "
         "* 60.5, "
         "CASE WHEN i % 2 THEN NULL ELSE (5511900000000 + i * 7919 % 807) || '@s.whatsapp.net' END, "
         "'CO' || printf('%010d', i) || 'AGGhc1NTExOTAwMDAwMDAwMEBzLndoYXRzYXBwLm5ldA==', printf('3A%018d', i), "
         "CASE WHEN i % 5 THEN " +
         text + " END, NULL FROM n;" + numbers +
         "INSERT INTO ZWAMEDIAITEM (Z_PK, Z_ENT, Z_OPT, ZFILESIZE, ZMESSAGE, ZMEDIALOCALPATH, ZMEDIAURL, "
         "ZVCARDSTRING, ZMEDIAKEY, ZMETADATA) SELECT i, 8, 1, CASE WHEN i % 5 THEN 0 ELSE 123456 END, i, "
         "CASE WHEN i % 5 = 0 THEN 'Media/' || (5511900000000 + i * 7919 % 807) || "
         "'@s.whatsapp.net/a/b/ab12cd34-0000-4000-8000-' || printf('%012d', i) || '.jpg' END, "
         "CASE WHEN i % 5 = 0 THEN 'https://media.example.com/d/f/' || printf('%040d', i) || '.enc' END, "
         "CASE WHEN i % 5 = 0 THEN 'image/jpeg' END, CASE WHEN i % 5 = 0 THEN zeroblob(76) END, CASE WHEN i % 8 = 1 "
         "THEN " +
         replyMetadata + " END FROM n WHERE i % 5 = 0 OR i % 8 = 1;" + numbers +
         "INSERT INTO ZWAMESSAGEINFO (Z_PK, Z_ENT, Z_OPT, ZMESSAGE, ZRECEIPTINFO) SELECT i, 11, 1, i, " + receipts +
         " FROM n WHERE i % 2;";
}

// The newest quarter stands in the journal, as on a phone in use.
void writeMessages(const fs::path& path) {
  constexpr int settled = messageCount / 4 * 3;
  sqlite3* database = openDatabase(path);
  execute(database, "PRAGMA synchronous = OFF; PRAGMA journal_mode = OFF; BEGIN");
  execute(database, Fixture::chatStorageSchema);
  execute(database,
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1000) " + std::string(people));
  execute(database, messages(1, settled) + "COMMIT; PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0");
  for (int first = settled + 1; first <= messageCount; first += 1'000) execute(database, messages(first, first + 999));
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_close(database);
}

constexpr const char* sameColumns =
    "SELECT t0.Z_PK, ZCHATSESSION, ZMESSAGEDATE, ZTEXT, ZISFROMME, ZFROMJID, ZPUSHNAME, ZGROUPMEMBER, ZSORT, "
    "ZMESSAGETYPE, ZGROUPEVENTTYPE, ZFLAGS, ZSTARRED, ZSTANZAID, t1.ZMESSAGE, ZMEDIALOCALPATH, ZTITLE, ZVCARDNAME, "
    "ZVCARDSTRING, ZMEDIAURL, ZAUTHORNAME, ZLATITUDE, ZLONGITUDE, ZMOVIEDURATION, ZMEDIAORIGIN, ZMETADATA, "
    "ZRECEIPTINFO FROM ZWAMESSAGE t0 LEFT JOIN ZWAMEDIAITEM t1 ON t1.Z_PK = t0.ZMEDIAITEM "
    "LEFT JOIN ZWAMESSAGEINFO t2 ON t2.Z_PK = t0.ZMESSAGEINFO";

// What SQLite alone takes to hand the same columns over.
void scan(const fs::path& path) {
  sqlite3* database = openDatabase(path);
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database, sameColumns, -1, &statement, nullptr) != SQLITE_OK) std::abort();
  std::int64_t bytes = 0;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      if (sqlite3_column_type(statement, i) == SQLITE_INTEGER) {
        bytes += sqlite3_column_int64(statement, i) != 0 ? 8 : 0;
      } else if (sqlite3_column_blob(statement, i) != nullptr) {
        bytes += sqlite3_column_bytes(statement, i);
      }
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  if (bytes == 0) std::abort();
}

}  // namespace

void measureMessages(const fs::path& folder) {
  const fs::path stored = folder / "ChatStorage.sqlite";
  const fs::path copy = folder / "copy.sqlite";
  writeMessages(stored);
  // Reading folds the journal in.
  const auto makeCopy = [&] {
    for (const char* suffix : {"", "-wal"}) {
      fs::copy_file(stored.native() + suffix, copy.native() + suffix, fs::copy_options::overwrite_existing);
    }
    fs::remove(copy.native() + "-shm");
  };
  const auto read = [&] {
    const ChatStorageSnapshot snapshot(ChatStorageReader::load(copy));
    if (snapshot.messages().size() != messageCount) std::abort();
  };
  makeCopy();
  const std::int64_t memory = Measure::peakMemory(read);
  fmt::print("{:<34} {} bytes a message\n", "Memory for 1,000,000 messages:", memory / messageCount);
  Measure::report("Reading them:", "a bare scan",
                  Measure::compare(
                      read, [&] { scan(copy); }, makeCopy));
}
