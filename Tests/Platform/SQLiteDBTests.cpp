#include "TidewellCore/Platform/SQLiteDB.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstdlib>

#include "Tests/Platform/SQLiteScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::errorOf;
using Fixture::execute;
using Fixture::SQLiteDBTest;
using Fixture::texts;
using Fixture::valueOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST_F(SQLiteDBTest, AMissingFileIsNotOpened) {
  using Mode = SQLiteDB::OpenMode;
  EXPECT_EQ(errorOf([&] { open(Mode::readOnly); }),
            TidewellError::databaseOpenFailed("open Manifest.db read-only", file_, "unable to open database file"));
  EXPECT_EQ(errorOf([&] { open(Mode::writableCopy); }),
            TidewellError::databaseOpenFailed("open writable SQLite copy", file_, "unable to open database file"));
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(SQLiteDBTest, AMissingFolderIsNotCreated) {
  const std::string path = folder_ / "missing" / "some.db";
  EXPECT_EQ(errorOf([&] { SQLiteDB(path, SQLiteDB::OpenMode::create); }),
            TidewellError::databaseOpenFailed("create SQLite file", path, "unable to open database file"));
}

TEST_F(SQLiteDBTest, TheCallersStageIsTold) {
  EXPECT_EQ(errorOf([&] { SQLiteDB(file_, SQLiteDB::OpenMode::readOnly, "read the contacts"); }),
            TidewellError::databaseOpenFailed("read the contacts", file_, "unable to open database file"));
}

TEST_F(SQLiteDBTest, APathIsNoURI) {
  EXPECT_TRUE(errorOf([] { SQLiteDB("file::memory:", SQLiteDB::OpenMode::readOnly); }));
}

TEST_F(SQLiteDBTest, CreatesAFile) {
  open(SQLiteDB::OpenMode::create).query("CREATE TABLE t (a)", {}, {});
  EXPECT_TRUE(open(SQLiteDB::OpenMode::readOnly).tableExists("t"));
}

TEST_F(SQLiteDBTest, ReadOnlyRefusesWrites) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  EXPECT_TRUE(errorOf([&] { db.query("INSERT INTO t VALUES (1)", {}, {}); })->is<TidewellError::InvalidDatabase>());
  EXPECT_THAT(texts(db, "SELECT a FROM t"), IsEmpty());
}

TEST_F(SQLiteDBTest, ReadsEveryTypeOfValue) {
  const SQLiteDB db =
      database("CREATE TABLE t (a, b, c, d, e, f); INSERT INTO t VALUES (-7, 1.5, 'Zoë', x'00FF', x'', NULL)");
  std::vector<SQLiteValue> values;
  db.query("SELECT * FROM t", {}, [&](const SQLiteRow& row) { values = row.values; });
  EXPECT_THAT(values, ElementsAre(SQLiteValue(std::int64_t{-7}), SQLiteValue(1.5), SQLiteValue(std::string("Zoë")),
                                  SQLiteValue(Bytes{0x00, 0xFF}), SQLiteValue(Bytes{}), SQLiteValue(SQLiteNull{})));
}

TEST_F(SQLiteDBTest, RowsKeepTheStatementsOrder) {
  const SQLiteDB db = database("CREATE TABLE t (a); INSERT INTO t VALUES (2), (1), (3)");
  EXPECT_THAT(texts(db, "SELECT a FROM t ORDER BY a DESC"), ElementsAre("3", "2", "1"));
}

TEST_F(SQLiteDBTest, ARowDoesNotInheritFromTheRowBefore) {
  const SQLiteDB db =
      database("CREATE TABLE t (a); INSERT INTO t VALUES ('long text before'), ('x'), (NULL), (x''), (1)");
  std::vector<SQLiteValue> values;
  db.query("SELECT a FROM t ORDER BY rowid", {}, [&](const SQLiteRow& row) { values.push_back(row.values[0]); });
  EXPECT_THAT(values, ElementsAre(SQLiteValue(std::string("long text before")), SQLiteValue(std::string("x")),
                                  SQLiteValue(SQLiteNull{}), SQLiteValue(Bytes{}), SQLiteValue(std::int64_t{1})));
}

TEST_F(SQLiteDBTest, ValuesAreLookedUpByColumnName) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  db.query("SELECT 1 AS x, 2 AS y, 3 AS x", {}, [](const SQLiteRow& row) {
    EXPECT_EQ(row.intValue("y"), 2);
    EXPECT_EQ(row.intValue("x"), 3) << "of two columns with one name the later counts";
    EXPECT_EQ(row.value("z"), nullptr);
    EXPECT_EQ(row.value("Y"), nullptr);
  });
}

TEST_F(SQLiteDBTest, BindsParametersInOrder) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  EXPECT_EQ(valueOf(db, "SELECT ? || ?", {"a", "b"}), SQLiteValue(std::string("ab")));
  EXPECT_EQ(valueOf(db, "SELECT ?", {std::int64_t{INT64_MIN}}), SQLiteValue(std::int64_t{INT64_MIN}));
  EXPECT_EQ(valueOf(db, "SELECT ?", {Bytes{1, 0, 2}}), SQLiteValue(Bytes{1, 0, 2}));
  EXPECT_EQ(valueOf(db, "SELECT typeof(?)", {Bytes{}}), SQLiteValue(std::string("blob")));
  EXPECT_EQ(valueOf(db, "SELECT ?", {"'; DROP TABLE t; --"}), SQLiteValue(std::string("'; DROP TABLE t; --")));
}

TEST_F(SQLiteDBTest, TooManyParametersAreAFailureAndTheConnectionStaysUsable) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  EXPECT_TRUE(errorOf([&] { valueOf(db, "SELECT 1", {"a"}); })->is<TidewellError::InvalidDatabase>());
  EXPECT_EQ(valueOf(db, "SELECT 1"), SQLiteValue(std::int64_t{1}));
}

TEST_F(SQLiteDBTest, AFaultyStatementTellsWhy) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  EXPECT_EQ(errorOf([&] { valueOf(db, "SELECT b FROM t"); }), TidewellError::invalidDatabase("no such column: b"));
  EXPECT_TRUE(errorOf([&] { valueOf(db, ""); })->is<TidewellError::InvalidDatabase>()) << "an empty statement";
}

TEST_F(SQLiteDBTest, AStatementThatFailsMidwayHasDeliveredTheEarlierRows) {
  const SQLiteDB db = database("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2), (-9223372036854775808)");
  std::vector<std::int64_t> seen;
  const auto error = errorOf([&] {
    db.query("SELECT abs(a) AS a FROM t ORDER BY rowid", {},
             [&](const SQLiteRow& row) { seen.push_back(*row.intValue("a")); });
  });
  EXPECT_EQ(error, TidewellError::invalidDatabase("integer overflow"));
  EXPECT_THAT(seen, ElementsAre(1, 2));
  EXPECT_EQ(valueOf(db, "SELECT 1"), SQLiteValue(std::int64_t{1}));
}

TEST_F(SQLiteDBTest, WhatTheHandlerThrowsEndsTheStatement) {
  const SQLiteDB db = database("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)");
  EXPECT_EQ(
      errorOf([&] { db.query("SELECT a FROM t", {}, [](const SQLiteRow&) { throw TidewellError::cancelled(); }); }),
      TidewellError::cancelled());
  EXPECT_THAT(texts(db, "SELECT a FROM t"), ElementsAre("1", "2"));
}

TEST_F(SQLiteDBTest, AStatementThatTakesLongCanBeCancelled) {
  constexpr const char* endless =
      "WITH RECURSIVE count(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM count) SELECT max(n) FROM count";
  SQLiteDB db = database("CREATE TABLE t (a)");
  int questions = 0;
  db.cancelWhen([&] { return ++questions > 3; });
  EXPECT_EQ(errorOf([&] { valueOf(db, endless); }), TidewellError::cancelled());
  EXPECT_EQ(questions, 4);
  EXPECT_EQ(errorOf([&] { db.forEachRow(endless, [](const SQLiteRowView&) {}); }), TidewellError::cancelled());
}

TEST_F(SQLiteDBTest, AFileThatIsNoDatabaseIsInvalid) {
  Fixture::writeFile(file_, std::string(4096, 'x'));
  EXPECT_EQ(errorOf([&] { open(SQLiteDB::OpenMode::readOnly).tableExists("t"); }),
            TidewellError::invalidDatabase("file is not a database"));
}

TEST_F(SQLiteDBTest, AMalformedPageIsAFailureAndNoCrash) {
  std::string rows = "CREATE TABLE t (a); INSERT INTO t VALUES (1)";
  for (int i = 0; i < 3000; ++i) rows += ", ('" + std::string(20, 'x') + std::to_string(i) + "')";
  execute(file_, rows);
  Bytes bytes = Fixture::readFile(file_);
  std::fill(bytes.begin() + 4096, bytes.end() - 4096, std::uint8_t{0xEE});
  Fixture::writeFile(file_, ByteView(bytes));
  EXPECT_TRUE(errorOf([&] {
                texts(open(SQLiteDB::OpenMode::readOnly), "SELECT a FROM t");
              })->is<TidewellError::InvalidDatabase>());
}

TEST_F(SQLiteDBTest, ReadsIntegersFromIntegersAndPlainText) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  const auto intOf = [&](const std::string& expression) {
    std::optional<std::int64_t> result;
    db.query("SELECT " + expression + " AS a", {}, [&](const SQLiteRow& row) { result = row.intValue("a"); });
    return result;
  };
  EXPECT_EQ(intOf("7"), 7);
  EXPECT_EQ(intOf("'+12'"), 12);
  EXPECT_EQ(intOf("'-12'"), -12);
  EXPECT_EQ(intOf("'9223372036854775807'"), INT64_MAX);
  EXPECT_EQ(intOf("'-9223372036854775808'"), INT64_MIN);
  for (const char* other : {"'12a'", "''", "'+'", "'-'", "' 12'", "'12 '", "'9223372036854775808'", "'+-1'", "'1.0'",
                            "1.0", "x'3132'", "NULL", "'0x10'"}) {
    EXPECT_EQ(intOf(other), std::nullopt) << other;
  }
  db.query("SELECT 1 AS a", {}, [](const SQLiteRow& row) { EXPECT_EQ(row.intValue("b"), std::nullopt); });
}

TEST_F(SQLiteDBTest, ReadsTextFromTextAndNumbers) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  const auto textOf = [&](const std::string& expression) { return texts(db, "SELECT " + expression)[0]; };
  EXPECT_EQ(textOf("'Zoë'"), "Zoë");
  EXPECT_EQ(textOf("''"), "");
  EXPECT_EQ(textOf("42"), "42");
  EXPECT_EQ(textOf("-9223372036854775808"), "-9223372036854775808");
  EXPECT_EQ(textOf("1.5"), "1.5");
  EXPECT_EQ(textOf("3.0"), "3.0");
  EXPECT_EQ(textOf("-0.1"), "-0.1");
  EXPECT_EQ(textOf("x'41'"), std::nullopt);
  EXPECT_EQ(textOf("NULL"), std::nullopt);
}

TEST(SQLiteRow, TextOfARealReadsBackTheSame) {
  for (const double number : {0.1, 1e300, 1e-300, 1e22, 123456789012345680.0, 5e-324, 714564800.123456}) {
    const SQLiteRow row{.names = std::make_shared<const std::vector<std::string>>(1, "a"), .values = {number}};
    EXPECT_EQ(std::strtod(row.textValue("a")->c_str(), nullptr), number);
    EXPECT_NE(row.textValue("a")->find('.'), std::string::npos) << *row.textValue("a");
  }
}

TEST_F(SQLiteDBTest, RepairsTextThatIsNoUTF8) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  EXPECT_THAT(texts(db, "SELECT CAST(x'61FF62' AS TEXT)"), ElementsAre("a\uFFFD"
                                                                       "b"));
}

TEST_F(SQLiteDBTest, TellsWhetherATableExists) {
  const SQLiteDB db = database("CREATE TABLE ZWAMESSAGE (a); CREATE VIEW aView AS SELECT 1; CREATE TABLE größe (a)");
  EXPECT_TRUE(db.tableExists("ZWAMESSAGE"));
  EXPECT_TRUE(db.tableExists("größe"));
  EXPECT_FALSE(db.tableExists("ZWAMESSAG"));
  EXPECT_FALSE(db.tableExists("aView")) << "a view is no table";
}

TEST_F(SQLiteDBTest, ListsColumnsInUpperCase) {
  const SQLiteDB db = database("CREATE TABLE t (Z_PK INTEGER, zText, ZfromJID)");
  EXPECT_THAT(db.columns("t"), UnorderedElementsAre("Z_PK", "ZTEXT", "ZFROMJID"));
  EXPECT_THAT(db.columns("missing"), IsEmpty());
}

TEST_F(SQLiteDBTest, RefusesUnsafeIdentifiers) {
  const SQLiteDB db = database("CREATE TABLE t (a)");
  for (const std::string& name : {std::string("two words"), std::string(), std::string("t;"), std::string("t'"),
                                  std::string("t)"), std::string("t\0x", 3), std::string("t\xFF"), std::string("😀")}) {
    EXPECT_EQ(errorOf([&] { db.tableExists(name); }), TidewellError::invalidDatabase("Unsafe identifier: " + name));
    EXPECT_EQ(errorOf([&] { db.columns(name); }), TidewellError::invalidDatabase("Unsafe identifier: " + name));
  }
  EXPECT_TRUE(db.tableExists("t"));
}

TEST_F(SQLiteDBTest, NothingButATableIsOne) {
  const SQLiteDB db = database(
      "CREATE TABLE plain (a); CREATE TABLE other (a); CREATE VIEW aView AS SELECT a FROM plain;"
      "CREATE VIRTUAL TABLE virtual USING fts5(a); CREATE INDEX anIndex ON plain (a);"
      "CREATE TRIGGER plain AFTER INSERT ON plain BEGIN DELETE FROM other; END;");
  EXPECT_EQ(db.kindOf("plain"), SQLiteDB::Kind::table);
  EXPECT_EQ(db.kindOf("missing"), SQLiteDB::Kind::none);
  for (const char* name : {"aView", "virtual", "anIndex"}) {
    EXPECT_EQ(db.kindOf(name), SQLiteDB::Kind::other) << name;
    EXPECT_FALSE(db.tableExists(name)) << name;
  }
}

TEST_F(SQLiteDBTest, NoViewOrVirtualTableIsEverRead) {
  const SQLiteDB db = database(
      "CREATE VIEW aView AS SELECT 1 AS a; CREATE VIRTUAL TABLE virtual USING fts5(a);"
      "INSERT INTO virtual VALUES ('row')");
  EXPECT_EQ(errorOf([&] { valueOf(db, "SELECT a FROM aView"); }),
            TidewellError::invalidDatabase("access to view \"aView\" prohibited"));
  EXPECT_EQ(errorOf([&] { valueOf(db, "SELECT a FROM virtual"); }),
            TidewellError::invalidDatabase("no such module: fts5"));
}

TEST_F(SQLiteDBTest, AViewThatCallsItselfATableIsAnError) {
  const SQLiteDB db = database(
      "CREATE TABLE t (a); CREATE VIEW v AS SELECT 1 AS a; PRAGMA writable_schema = ON;"
      "UPDATE sqlite_master SET type = 'table', rootpage = 2 WHERE name = 'v'");
  EXPECT_EQ(errorOf([&] { db.tableExists("v"); }), TidewellError::invalidDatabase("malformed database schema (v)"));
}

TEST_F(SQLiteDBTest, AStrangersFileIsDistrusted) {
  execute(file_, "CREATE TABLE t (a)");
  for (const auto mode : {SQLiteDB::OpenMode::readOnly, SQLiteDB::OpenMode::writableCopy}) {
    const SQLiteDB db = open(mode);
    EXPECT_EQ(valueOf(db, "PRAGMA trusted_schema"), SQLiteValue(std::int64_t{0}));
    EXPECT_EQ(valueOf(db, "PRAGMA cell_size_check"), SQLiteValue(std::int64_t{1}));
    EXPECT_EQ(errorOf([&] { db.query("ATTACH ':memory:' AS other", {}, {}); }),
              TidewellError::invalidDatabase("too many attached databases - max 0"));
  }
}

TEST_F(SQLiteDBTest, AValueOfMoreThan64MegabytesIsRefused) {
  const SQLiteDB db = database("CREATE TABLE t (a); INSERT INTO t VALUES (zeroblob(67108000)), (zeroblob(67108865))");
  EXPECT_EQ(valueOf(db, "SELECT length(a) FROM t WHERE rowid = 1"), SQLiteValue(std::int64_t{67108000}));
  EXPECT_EQ(errorOf([&] { valueOf(db, "SELECT a FROM t WHERE rowid = 2"); }),
            TidewellError::invalidDatabase("string or blob too big"));
}

TEST_F(SQLiteDBTest, ALinkInTheFilesPlaceIsRefusedButNotOneAbove) {
  const fs::path folder = folder_ / "folder";
  fs::create_directory(folder);
  execute(folder / "t.db", "CREATE TABLE t (a)");
  fs::create_symlink(folder / "t.db", folder / "link.db");
  fs::create_directory_symlink(folder, folder_ / "linked");
  for (const auto mode : {SQLiteDB::OpenMode::readOnly, SQLiteDB::OpenMode::writableCopy}) {
    const auto error = errorOf([&] { SQLiteDB(folder / "link.db", mode); });
    ASSERT_TRUE(error);
    EXPECT_EQ(std::get<TidewellError::DatabaseOpenFailed>(error->value()).path, (folder / "link.db").string());
    EXPECT_TRUE(SQLiteDB(folder_ / "linked/t.db", mode).tableExists("t"));
  }
}

}  // namespace
