#include "TidewellCore/Platform/SQLiteHeader.h"

#include <gtest/gtest.h>

#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

class SQLiteHeaderTest : public testing::Test {
 protected:
  // A database as SQLite itself writes it.
  Bytes database(Fixture::Journal journal) const {
    Fixture::DatabaseWriter writer(journal);
    writer.execute("CREATE TABLE t (a)");
    writer.execute("INSERT INTO t VALUES (zeroblob(20000))");
    return writer.finish().main;
  }
  std::optional<SQLiteHeader> read(ByteView bytes) const {
    Fixture::writeFile(file_, bytes);
    return SQLiteHeader::read(file_);
  }

  const Fixture::TemporaryDirectory folder_;
  const std::filesystem::path file_ = folder_ / "some.db";
};

TEST_F(SQLiteHeaderTest, TellsTheDatabasesSize) {
  const Bytes bytes = database(Fixture::Journal::rollback);
  const auto header = read(bytes);
  ASSERT_TRUE(header);
  EXPECT_EQ(header->databaseSize, static_cast<std::int64_t>(bytes.size()));
  EXPECT_FALSE(header->isWAL);
}

TEST_F(SQLiteHeaderTest, StillTellsTheSizeOfACutDatabase) {
  const Bytes bytes = database(Fixture::Journal::rollback);
  EXPECT_EQ(read(ByteView(bytes).first(4096))->databaseSize, static_cast<std::int64_t>(bytes.size()));
}

TEST_F(SQLiteHeaderTest, KnowsWALMode) { EXPECT_TRUE(read(database(Fixture::Journal::walHeader))->isWAL); }

TEST_F(SQLiteHeaderTest, TheLargestPageSizeIsWrittenAsOne) {
  Bytes bytes = database(Fixture::Journal::rollback);
  bytes[16] = 0;
  bytes[17] = 1;
  EXPECT_EQ(read(bytes)->databaseSize % 65'536, 0);
  EXPECT_GT(read(bytes)->databaseSize, 0);
}

TEST_F(SQLiteHeaderTest, AStaleCountTellsNoSize) {
  Bytes bytes = database(Fixture::Journal::rollback);
  bytes[27] ^= 1;  // the change counter moved on without the count's own
  EXPECT_EQ(read(bytes)->databaseSize, 0);
}

TEST_F(SQLiteHeaderTest, OtherFilesHaveNoHeader) {
  EXPECT_FALSE(SQLiteHeader::read(file_)) << "a missing file";
  EXPECT_FALSE(read(Bytes(4096, 0x41)));
  EXPECT_FALSE(read(ByteView(database(Fixture::Journal::rollback)).first(99)));
  EXPECT_FALSE(SQLiteHeader::read(folder_.path()));
}

}  // namespace
