#include "TidewellCore/Backup/DatabaseCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t pageSize = 4096;
constexpr const char* manyRows =
    "CREATE TABLE t (a, b); CREATE INDEX i ON t (a);"
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)"
    "INSERT INTO t SELECT i, hex(zeroblob(50)) FROM n;";

class DatabaseCheckTest : public testing::Test {
 protected:
  void write(const std::string& sql, Journal journal = Journal::rollback) {
    DatabaseWriter writer(journal);
    writer.execute(sql);
    files_ = writer.finish();
  }
  DatabaseFaults beforeOpening(std::optional<std::int64_t> recordedSize = std::nullopt) const {
    store();
    return DatabaseCheck::beforeOpening(file_, recordedSize, SQLiteWALIndex::read(file_.native() + "-shm"));
  }
  DatabaseFaults within(const std::vector<DatabaseTable>& tables) const {
    store();
    return DatabaseCheck::within(SQLiteDB(file_, SQLiteDB::OpenMode::writableCopy), tables);
  }
  void store() const {
    writeFile(file_, files_.main);
    if (files_.wal) writeFile(file_.native() + "-wal", *files_.wal);
    if (files_.shm) writeFile(file_.native() + "-shm", *files_.shm);
  }

  // One row less in a leaf of the table, as one flipped bit in the page's count of cells may bring it about.
  void loseRow() {
    for (std::size_t page = pageSize; page < files_.main.size(); page += pageSize) {
      std::uint8_t& count = files_.main[page + 4];
      if (files_.main[page] != 13 || count % 2 == 0) continue;  // 13: a leaf of a table
      count ^= 1;
      return;
    }
    FAIL() << "no leaf has an odd number of cells";
  }

  // The second row of a leaf of the table in the place of its first, too: one flipped bit in the page's list of cells.
  void repeatRow() {
    for (std::size_t page = pageSize; page < files_.main.size(); page += pageSize) {
      constexpr std::size_t cells = 8;  // where the list begins, of two bytes each
      if (files_.main[page] != 13) continue;
      std::copy_n(files_.main.begin() + static_cast<std::ptrdiff_t>(page + cells + 2), 2,
                  files_.main.begin() + static_cast<std::ptrdiff_t>(page + cells));
      return;
    }
    FAIL() << "the table has no leaf";
  }

  std::int64_t rowCount() const {
    std::int64_t count = 0;
    store();
    SQLiteDB(file_, SQLiteDB::OpenMode::writableCopy).query("SELECT b FROM t", {}, [&](const SQLiteRow&) { ++count; });
    return count;
  }

  const TemporaryDirectory folder_;
  const fs::path file_ = folder_ / "some.db";
  DatabaseFiles files_;
};

TEST_F(DatabaseCheckTest, AWholeDatabaseHasNoFaults) {
  for (const Journal journal : {Journal::rollback, Journal::walHeader, Journal::walWithPendingRows}) {
    write(manyRows, journal);
    EXPECT_THAT(beforeOpening(), IsEmpty());
    EXPECT_THAT(within({{.name = "t"}, {.name = "missing"}}), IsEmpty());
  }
}

TEST_F(DatabaseCheckTest, AJournalThatIsDamagedOrCutIsAFault) {
  write(manyRows, Journal::walWithPendingRows);
  const auto size = static_cast<std::int64_t>(files_.wal->size());
  EXPECT_THAT(beforeOpening(size), IsEmpty());
  EXPECT_THAT(beforeOpening(size + 1), ElementsAre(DatabaseFault::journalDamaged));
  files_.wal->at(5000) ^= 1;
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::journalDamaged));
}

TEST_F(DatabaseCheckTest, ADamagedEndOfAJournalIsAFaultWhereTheIndexBesideKnowsIt) {
  write(manyRows, Journal::walWithPendingRows);
  files_.wal->back() ^= 1;
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::journalDamaged));
  files_.shm->front() ^= 1;
  EXPECT_THAT(beforeOpening(), IsEmpty()) << "the index is damaged itself";
}

TEST_F(DatabaseCheckTest, AShortTableIsLookedThroughInALargeDatabase) {
  write(std::string(manyRows) + "; CREATE TABLE large (a); INSERT INTO large VALUES (zeroblob(17000000))");
  EXPECT_THAT(within({{.name = "t", .isShort = true}}), IsEmpty());
  repeatRow();
  EXPECT_THAT(within({{.name = "t", .isShort = true}}), ElementsAre(DatabaseFault::damaged));
  EXPECT_THAT(within({{.name = "large", .isShort = true}}), IsEmpty());
}

TEST_F(DatabaseCheckTest, AnIndexOfAJournalTellsThatTheJournalIsMissing) {
  write(manyRows, Journal::walWithPendingRows);
  files_.wal.emplace();
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::journalMissing)) << "of which nothing is left";
  files_.wal.reset();
  fs::remove(file_.native() + "-wal");
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::journalMissing));
  // Where the journal's last frame stands in the database too, nothing is missing.
  std::copy_n(files_.shm->begin() + 16, 4, files_.shm->begin() + 96);
  EXPECT_THAT(beforeOpening(), IsEmpty());
}

TEST_F(DatabaseCheckTest, AJournalThatTheDatabaseDoesNotAskForIsAFault) {
  write(manyRows, Journal::walHeader);
  const Bytes main = files_.main;
  write(manyRows, Journal::walWithPendingRows);
  files_.main = main;
  EXPECT_THAT(beforeOpening(), IsEmpty());
  files_.main[19] ^= 2;  // one flipped bit, and SQLite passes over the journal
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::journalDamaged));
}

TEST_F(DatabaseCheckTest, ADatabaseShorterThanItsHeaderSaysIsDamaged) {
  write(manyRows);
  files_.main.resize(files_.main.size() - 1);
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::damaged));
}

TEST_F(DatabaseCheckTest, ADatabaseThatWasCaughtInACheckpointIsWholeWithItsJournal) {
  write(manyRows, Journal::walWithPendingRows);
  const Bytes before = files_.main;
  store();
  SQLiteDB(file_, SQLiteDB::OpenMode::writableCopy);
  files_.main = readFile(file_);  // with all that the journal held
  ASSERT_GT(files_.main.size(), before.size() + 3 * pageSize);
  files_.main[18] = files_.main[19] = 2;
  files_.main.resize(files_.main.size() - 3 * pageSize);  // of which the last pages were not written yet
  EXPECT_THAT(beforeOpening(), IsEmpty());
  EXPECT_EQ(rowCount(), 500);
  const DatabaseFiles caught = files_;
  files_.wal.reset();
  fs::remove(file_.native() + "-wal");
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::journalMissing, DatabaseFault::damaged));
  files_ = caught;
  files_.wal->resize(files_.wal->size() - 1);
  files_.shm.reset();
  fs::remove(file_.native() + "-shm");
  EXPECT_THAT(beforeOpening(), ElementsAre(DatabaseFault::damaged)) << "its last frame commits nothing now";
}

TEST_F(DatabaseCheckTest, ARowLostWithoutAnErrorIsDamage) {
  write(manyRows);
  loseRow();
  EXPECT_EQ(rowCount(), 499) << "SQLite says nothing";
  EXPECT_THAT(within({}), ElementsAre(DatabaseFault::damaged)) << "by its pages";
}

TEST_F(DatabaseCheckTest, ARowLostInALargeDatabaseIsDamageWhereAnIndexKnowsIt) {
  write(std::string(manyRows) + "CREATE TABLE large (a); INSERT INTO large VALUES (zeroblob(17000000))");
  EXPECT_THAT(within({{.name = "t"}, {.name = "large"}}), IsEmpty());
  loseRow();
  EXPECT_EQ(rowCount(), 499);
  EXPECT_THAT(within({}), IsEmpty()) << "its pages are too many to be looked at";
  EXPECT_THAT(within({{.name = "t"}}), ElementsAre(DatabaseFault::damaged));
}

TEST_F(DatabaseCheckTest, ARowInThePlaceOfAnotherIsDamage) {
  write(std::string(manyRows) + "CREATE TABLE large (a); INSERT INTO large VALUES (zeroblob(17000000))");
  repeatRow();
  EXPECT_EQ(rowCount(), 500) << "as many as before";
  EXPECT_THAT(within({{.name = "t"}}), ElementsAre(DatabaseFault::damaged));
}

TEST_F(DatabaseCheckTest, ATableThatCannotBeAskedKeepsNoOtherFromIt) {
  write(std::string(manyRows) + "CREATE TABLE w (a PRIMARY KEY) WITHOUT ROWID; INSERT INTO w VALUES (1)");
  EXPECT_THAT(within({{.name = "w"}, {.name = "t"}}), IsEmpty());
  repeatRow();
  EXPECT_THAT(within({{.name = "w"}, {.name = "t"}}), ElementsAre(DatabaseFault::damaged));
}

TEST_F(DatabaseCheckTest, AReferenceThatItsIndexKnowsOtherwiseIsDamage) {
  const std::vector<DatabaseTable> tables{{.name = "t", .reference = "a"}};
  const std::string index = "CREATE INDEX i ON t (a)";
  for (const char* known : {"NULL", "8", "a + 1", "'x'", "x'07'"}) {
    // The index holds what the reference was, the table what one flipped bit in the row has made of it.
    write(
        "CREATE TABLE t (a, b, was); CREATE TABLE large (a); INSERT INTO large VALUES (zeroblob(17000000));"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)"
        "INSERT INTO t SELECT i, hex(zeroblob(50)), i FROM n; UPDATE t SET was = " +
        std::string(known) + " WHERE a = 7; CREATE INDEX i ON t (was); PRAGMA writable_schema = ON;" +
        "UPDATE sqlite_master SET sql = '" + index + "' WHERE name = 'i'");
    EXPECT_THAT(within(tables), ElementsAre(DatabaseFault::damaged)) << known;
  }
  write(std::string(manyRows) + "UPDATE t SET a = NULL WHERE a = 7");
  EXPECT_THAT(within(tables), IsEmpty());
  write(
      "CREATE TABLE t (a); CREATE INDEX \"i\"\"j\" ON t (a); CREATE INDEX k ON t (a) WHERE a > 5; INSERT INTO t VALUES "
      "(1)");
  EXPECT_THAT(within(tables), IsEmpty()) << "no index that could tell";
}

TEST_F(DatabaseCheckTest, WhatStandsInForATableIsDamage) {
  for (const char* sql : {"CREATE VIEW t AS SELECT 1", "CREATE VIRTUAL TABLE t USING fts5(a)",
                          "CREATE TABLE other (a); CREATE INDEX t ON other (a)"}) {
    write(sql);
    EXPECT_THAT(within({{.name = "t"}}), ElementsAre(DatabaseFault::damaged)) << sql;
  }
}

TEST_F(DatabaseCheckTest, TheSchemasOwnChecksAreNotRun) {
  write("PRAGMA ignore_check_constraints = ON; CREATE TABLE t (a CHECK (a > 5)); INSERT INTO t VALUES (1)");
  EXPECT_THAT(within({{.name = "t"}}), IsEmpty());
}

TEST_F(DatabaseCheckTest, AnIndexInAnOrderThatNobodyKnowsIsNoDamage) {
  write(
      "CREATE TABLE t (a); INSERT INTO t VALUES ('x'); CREATE INDEX i ON t (a COLLATE NOCASE);"
      "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = replace(sql, 'NOCASE', 'THEIRS')");
  EXPECT_THAT(within({{.name = "t"}}), IsEmpty());
}

TEST_F(DatabaseCheckTest, WhatIsMalformedIsDamaged) {
  write(manyRows);
  std::fill(files_.main.begin() + pageSize, files_.main.end(), std::uint8_t{0xEE});
  EXPECT_THAT(within({{.name = "t"}}), ElementsAre(DatabaseFault::damaged));
}

TEST(DatabaseCheck, EveryFaultOfEveryDatabaseHasASentenceOfItsOwn) {
  std::map<std::string, int> texts;
  using enum DatabaseFault;
  for (const auto database : {BackupDatabase::index, BackupDatabase::chats, BackupDatabase::contacts}) {
    for (const DatabaseFault fault : {journalMissing, journalDamaged, damaged}) {
      const auto warnings = DatabaseCheck::warnings(database, {fault});
      ASSERT_EQ(warnings.size(), 1U);
      EXPECT_EQ(++texts[warnings[0]], 1) << warnings[0];
    }
  }
  EXPECT_THAT(DatabaseCheck::warnings(BackupDatabase::chats, {}), IsEmpty());
  EXPECT_EQ(DatabaseCheck::warnings(BackupDatabase::chats, {journalDamaged, damaged}).size(), 2U);
}

}  // namespace
}  // namespace Fixture
