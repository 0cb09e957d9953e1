#include <gmock/gmock.h>

#include <numeric>

#include "Tests/Platform/SQLiteScene.h"
#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/UnfinishedTransaction.h"

// Databases whose newest rows, or whose oldest, stand in a journal beside them.
namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

// A working copy of a database that was in WAL mode, newest row in its -wal file alone.
class SQLiteWALTest : public SQLiteDBTest {
 protected:
  void SetUp() override {
    DatabaseWriter writer(Journal::walWithPendingRows);
    writer.execute("CREATE TABLE t (a)");
    writer.execute("INSERT INTO t VALUES ('settled')");
    writer.checkpoint();
    writer.execute("INSERT INTO t VALUES ('pending')");
    const DatabaseFiles files = writer.finish();
    writeFile(file_, ByteView(files.main));
    ASSERT_TRUE(files.wal);
    writeFile(folder_ / "some.db-wal", ByteView(*files.wal));
  }
};

TEST_F(SQLiteWALTest, AWritableCopyFoldsTheWALIn) {
  EXPECT_THAT(texts(open(SQLiteDB::OpenMode::writableCopy), "SELECT a FROM t"), ElementsAre("settled", "pending"));
  EXPECT_FALSE(fs::exists(folder_ / "some.db-wal"));
  EXPECT_FALSE(fs::exists(folder_ / "some.db-shm"));
}

TEST_F(SQLiteWALTest, AWritableCopyEndsUpInDeleteMode) {
  const SQLiteDB db = open(SQLiteDB::OpenMode::writableCopy);
  EXPECT_EQ(valueOf(db, "PRAGMA journal_mode"), SQLiteValue(std::string("delete")));
  EXPECT_EQ(readFile(file_)[18], 1) << "the write version of the header";
}

TEST_F(SQLiteWALTest, AWritableCopyRefusesWrites) {
  const SQLiteDB db = open(SQLiteDB::OpenMode::writableCopy);
  EXPECT_TRUE(errorOf([&] { db.query("DELETE FROM t", {}, {}); })->is<TidewellError::InvalidDatabase>());
  EXPECT_THAT(texts(db, "SELECT a FROM t"), ElementsAre("settled", "pending"));
}

TEST_F(SQLiteWALTest, WithoutItsWALACopyLacksTheNewestRow) {
  fs::remove(folder_ / "some.db-wal");
  EXPECT_THAT(texts(open(SQLiteDB::OpenMode::writableCopy), "SELECT a FROM t"), ElementsAre("settled"));
}

TEST_F(SQLiteWALTest, AConnectionCanBeMoved) {
  SQLiteDB first = open(SQLiteDB::OpenMode::writableCopy);
  const SQLiteDB second = std::move(first);
  EXPECT_THAT(texts(second, "SELECT count(*) FROM t"), ElementsAre("2"));
}

// What an unfinished transaction leaves, with the name of a super-journal at the journal's end
// (https://www.sqlite.org/fileformat2.html#the_rollback_journal, and pager.c for that name).
void leaveUnfinishedWith(const std::string& superJournal, const fs::path& file) {
  leaveUnfinished(file, "DELETE FROM t");
  Bytes journal = readFile(file.native() + "-journal");
  const auto add = [&](const Bytes& bytes) { journal.insert(journal.end(), bytes.begin(), bytes.end()); };
  const auto addNumber = [&](std::uint32_t number) {
    for (const int shift : {24, 16, 8, 0}) journal.push_back(static_cast<std::uint8_t>(number >> shift));
  };
  const Bytes name = bytesOf(superJournal);
  addNumber(0x40000000 / 4096 + 1);
  add(name);
  addNumber(static_cast<std::uint32_t>(name.size()));
  addNumber(std::accumulate(name.begin(), name.end(), std::uint32_t{0}));
  add({0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7});
  writeFile(file.native() + "-journal", journal);
}

TEST_F(SQLiteDBTest, AJournalRemovesNoFileThatItNames) {
  execute(file_, "CREATE TABLE t (a); INSERT INTO t VALUES ('1'), ('2')");
  const fs::path letters = folder_ / "letters";
  writeFile(letters, "my letters");
  leaveUnfinishedWith(letters.string(), file_);
  EXPECT_THAT(texts(open(SQLiteDB::OpenMode::writableCopy), "SELECT a FROM t"), ElementsAre("1", "2"));
  EXPECT_EQ(readFile(letters), bytesOf("my letters"));
}

}  // namespace
}  // namespace Fixture
