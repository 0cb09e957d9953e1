#include "Benchmarks/PhoneData.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/ChatSchema.h"
#include "Tests/Support/SeededRandom.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using PhoneData::Chats;

// Its journal stays when it is closed.
sqlite3* openDatabase(const fs::path& path) {
  sqlite3* database = nullptr;
  if (sqlite3_open(path.c_str(), &database) != SQLITE_OK) std::abort();
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  return database;
}

void execute(sqlite3* database, const std::string& sql) {
  if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return;
  fmt::print(stderr, "{}\n", sqlite3_errmsg(database));
  std::abort();
}

std::string numbers(int first, int last) {
  return fmt::format("WITH RECURSIVE n(i) AS (SELECT {} UNION ALL SELECT i + 1 FROM n WHERE i < {}) ", first, last);
}

// The JID of the chat of that number; one chat in four is a group.
std::string jidOf(const std::string& number) {
  return fmt::format(
      "(CASE WHEN {0} % 4 THEN (5511900000000 + {0}) || '@s.whatsapp.net' ELSE (120363000000000000 + {0}) || '@g.us' "
      "END)",
      number);
}

std::string people(const Chats& chats) {
  return numbers(1, chats.chats) + "INSERT INTO ZWACHATSESSION (Z_PK, ZCONTACTJID, ZPARTNERNAME) SELECT i, " +
         jidOf("i") + ", 'Chat ' || i FROM n;";
}

// The text under a reply of field 5 (the original's stanza ID), 6 (its sender) and 19.1 (its words).
constexpr const char* replyMetadata =
    "CAST(x'2A14' || printf('3A%018d', i - 7) || x'321B' || (5511900000000 + i % 807) || '@s.whatsapp.net' || "
    "x'9A01180A16' || 'That is what they said' AS BLOB)";
// Who has received and read it; nobody shows that.
constexpr const char* receipts = "CAST(x'12140A0C' || printf('%012d', i) || x'100118022002' AS BLOB)";

// An eighth of them are answers.
std::string messages(const Chats& chats, int first, int last) {
  const std::string rows = numbers(first, last);
  const std::string chat = fmt::format("(1 + (i * 7919) % {})", chats.chats);
  const std::string hasMedium = fmt::format("i % {} = 0", chats.messagesToAMedium);
  const std::string name = "printf('%08x-%04x-4a00-8b00-%012d', (i * 2654435761) & 0xffffffff, i & 0xffff, i)";
  const std::string path = fmt::format(
      "'Media/' || {0} || '/' || substr({1}, 1, 1) || '/' || substr({1}, 2, 1) || '/' "
      "|| {1} || '.jpg'",
      jidOf(chat), name);
  const std::string text =
      "substr('The quick brown fox jumps over the lazy dog and then it goes home to sleep until the morning comes', "
      "1, 10 + i % 81)";
  return rows +
         fmt::format(
             "INSERT INTO ZWAMESSAGE (Z_PK, Z_ENT, Z_OPT, ZFLAGS, ZGROUPEVENTTYPE, ZISFROMME, ZMESSAGESTATUS, "
             "ZMESSAGETYPE, ZSORT, ZSTARRED, ZCHATSESSION, ZMEDIAITEM, ZMESSAGEINFO, ZMESSAGEDATE, ZSENTDATE, "
             "ZFROMJID, ZPUSHNAME, ZSTANZAID, ZTEXT, ZTOJID) SELECT i, 9, 2, 0, 2 * (i % 2), i % 2, 8, "
             "{0}, i, 0, {1}, CASE WHEN {0} OR i % 8 = 1 THEN i END, CASE WHEN i % 2 THEN i END, "
             "400000000 + i * 60.5, 400000000 + i * 60.5, "
             "CASE WHEN i % 2 THEN NULL ELSE {2} END, "
             "'CO' || printf('%010d', i) || 'AGGhc1NTExOTAwMDAwMDAwMEBzLndoYXRzYXBwLm5ldA==', printf('3A%018d', i), "
             "CASE WHEN {0} THEN NULL ELSE {3} END, NULL FROM n;",
             hasMedium, chat, jidOf(chat), text) +
         rows +
         fmt::format(
             "INSERT INTO ZWAMEDIAITEM (Z_PK, Z_ENT, Z_OPT, ZFILESIZE, ZMESSAGE, ZMEDIALOCALPATH, ZMEDIAURL, "
             "ZVCARDSTRING, ZMEDIAKEY, ZMETADATA) SELECT i, 8, 1, CASE WHEN {0} THEN 123456 ELSE 0 END, i, "
             "CASE WHEN {0} THEN {1} END, "
             "CASE WHEN {0} THEN 'https://media.example.com/d/f/' || printf('%040d', i) || '.enc' END, "
             "CASE WHEN {0} THEN 'image/jpeg' END, CASE WHEN {0} THEN zeroblob(76) END, CASE WHEN i % 8 = 1 "
             "THEN {2} END FROM n WHERE {0} OR i % 8 = 1;",
             hasMedium, path, replyMetadata) +
         rows +
         fmt::format(
             "INSERT INTO ZWAMESSAGEINFO (Z_PK, Z_ENT, Z_OPT, ZMESSAGE, ZRECEIPTINFO) SELECT i, 11, 1, i, {} "
             "FROM n WHERE i % 2;",
             receipts);
}

constexpr const char* sameColumns =
    "SELECT t0.Z_PK, ZCHATSESSION, ZMESSAGEDATE, ZTEXT, ZISFROMME, ZFROMJID, ZPUSHNAME, ZGROUPMEMBER, ZSORT, "
    "ZMESSAGETYPE, ZGROUPEVENTTYPE, ZFLAGS, ZSTARRED, ZSTANZAID, t1.ZMESSAGE, ZMEDIALOCALPATH, ZTITLE, ZVCARDNAME, "
    "ZVCARDSTRING, ZMEDIAURL, ZAUTHORNAME, ZLATITUDE, ZLONGITUDE, ZMOVIEDURATION, ZMEDIAORIGIN, ZMETADATA, "
    "ZRECEIPTINFO FROM ZWAMESSAGE t0 LEFT JOIN ZWAMEDIAITEM t1 ON t1.Z_PK = t0.ZMEDIAITEM "
    "LEFT JOIN ZWAMESSAGEINFO t2 ON t2.Z_PK = t0.ZMESSAGEINFO";

std::vector<std::string> mediaPaths(const fs::path& database) {
  sqlite3* handle = openDatabase(database);
  sqlite3_stmt* statement = nullptr;
  constexpr const char* paths = "SELECT ZMEDIALOCALPATH FROM ZWAMEDIAITEM WHERE ZMEDIALOCALPATH IS NOT NULL";
  if (sqlite3_prepare_v2(handle, paths, -1, &statement, nullptr) != SQLITE_OK) std::abort();
  std::vector<std::string> found;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    found.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
  }
  sqlite3_finalize(statement);
  sqlite3_close(handle);
  return found;
}

Fixture::WhatsAppContents appOf(const PhoneData::Backup& backup) {
  const Fixture::TemporaryDirectory folder;
  const fs::path database = folder.path() / "ChatStorage.sqlite";
  PhoneData::writeChats(backup.chats, database);
  Fixture::WhatsAppContents app;
  app.withChatStorage = false;
  for (const char* name : {"ChatStorage.sqlite", "ChatStorage.sqlite-wal"}) {
    app.files.push_back({.relativePath = name, .content = Fixture::readFile(folder.path() / name)});
  }
  if (backup.bytesOfAMedium == 0) return app;
  Fixture::SeededRandom random(7);
  for (std::string& path : mediaPaths(database)) {
    app.mediaFiles.push_back({.localPath = std::move(path), .content = random.bytes(backup.bytesOfAMedium)});
  }
  return app;
}

}  // namespace

// The newest quarter stands in the journal.
void PhoneData::writeChats(const Chats& chats, const fs::path& database) {
  const int settled = chats.messages / 4 * 3;
  sqlite3* handle = openDatabase(database);
  execute(handle, "PRAGMA synchronous = OFF; PRAGMA journal_mode = OFF; BEGIN");
  execute(handle, Fixture::chatStorageSchema);
  execute(handle, people(chats));
  execute(handle, messages(chats, 1, settled) + "COMMIT; PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0");
  for (int first = settled + 1; first <= chats.messages; first += 1'000) {
    execute(handle, messages(chats, first, std::min(first + 999, chats.messages)));
  }
  sqlite3_close(handle);
}

void PhoneData::writeBackup(const Backup& backup, const fs::path& folder) {
  Fixture::BackupContents contents{.whatsApp = appOf(backup)};
  if (backup.isEncrypted) {
    contents.encryption = Fixture::Encryption{
        .keyBag = {.password = password, .iterations = backup.rounds.first, .doubleIterations = backup.rounds.second}};
  }
  for (int i = 0; i < backup.filesOfOtherApps; ++i) {
    contents.otherFiles.push_back({.domain = "CameraRollDomain",
                                   .relativePath = fmt::format("Media/DCIM/{}APPLE/IMG_{:06}.HEIC", 100 + i / 1000, i),
                                   .storage = {.missing = true}});
  }
  Fixture::writeBackup(contents, folder);
}

void PhoneData::scanMessages(const fs::path& database) {
  sqlite3* handle = openDatabase(database);
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(handle, sameColumns, -1, &statement, nullptr) != SQLITE_OK) std::abort();
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
  sqlite3_close(handle);
  if (bytes == 0) std::abort();
}
