#include "TidewellCore/Platform/SQLiteWAL.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <utility>

#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

// What a failed expectation shows of a log.
inline void PrintTo(const SQLiteWAL& log, std::ostream* stream) {
  *stream << "state " << static_cast<int>(log.state) << ", " << log.frameCount << " frames";
}

namespace {

namespace fs = std::filesystem;
using State = SQLiteWAL::State;

constexpr std::size_t headerSize = 32;
constexpr std::size_t frameSize = 24 + 4096;

// A database whose rows all stand in its log, and what SQLite reads of the two.
class WriteAheadLog : public testing::Test {
 protected:
  // Three transactions; the second is of several frames.
  void SetUp() override {
    Fixture::DatabaseWriter writer(Fixture::Journal::walWithPendingRows);
    writer.execute("CREATE TABLE t (a)");
    writer.checkpoint();
    writer.execute("INSERT INTO t VALUES (1); COMMIT; BEGIN");
    writer.execute("INSERT INTO t VALUES (zeroblob(30000)); COMMIT; BEGIN; INSERT INTO t VALUES (3)");
    const Fixture::DatabaseFiles files = writer.finish();
    database_ = files.main;
    log_ = *files.wal;
    Fixture::writeFile(folder_ / "index", Fixture::ByteView(*files.shm));
    index_ = SQLiteWALIndex::read(folder_ / "index");
    ASSERT_TRUE(index_);
  }

  SQLiteWAL readWithIndex() const {
    Fixture::writeFile(file_, Fixture::ByteView(log_));
    return SQLiteWAL::read(file_, std::nullopt, index_);
  }
  SQLiteWAL read(std::optional<std::int64_t> recordedSize = std::nullopt) const {
    Fixture::writeFile(file_, Fixture::ByteView(log_));
    return SQLiteWAL::read(file_, recordedSize);
  }
  std::int64_t rowsForSQLite() const {
    const fs::path database = folder_ / "t.db";
    Fixture::writeFile(database, Fixture::ByteView(database_));
    Fixture::writeFile(folder_ / "t.db-wal", Fixture::ByteView(log_));
    return countRows(database);
  }
  static std::int64_t countRows(const fs::path& database) {
    sqlite3* handle = nullptr;
    sqlite3_stmt* statement = nullptr;
    sqlite3_open(database.c_str(), &handle);
    sqlite3_prepare_v2(handle, "SELECT count(*) FROM t", -1, &statement, nullptr);
    const std::int64_t count = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : -1;
    sqlite3_finalize(statement);
    sqlite3_close(handle);
    return count;
  }

  std::size_t frameCount() const { return (log_.size() - headerSize) / frameSize; }
  static std::size_t frame(std::size_t index) { return headerSize + index * frameSize; }
  void flip(std::size_t offset) { log_[offset] ^= 1; }

  // Ends the log after so many frames, as if the phone had stopped there.
  void keepFrames(std::size_t count) { log_.resize(frame(count)); }

  std::uint32_t number(std::size_t offset) const {
    return static_cast<std::uint32_t>(log_[offset] << 24 | log_[offset + 1] << 16 | log_[offset + 2] << 8 |
                                      log_[offset + 3]);
  }
  void setNumber(std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) log_[offset + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
  // As a machine of the other byte order would have written the log.
  void sumInBigEndian() {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    const auto add = [&](std::size_t begin, std::size_t end) {
      for (std::size_t i = begin; i < end; i += 8) {
        first += number(i) + second;
        second += number(i + 4) + first;
      }
    };
    setNumber(0, 0x377F0683);
    add(0, 24);
    setNumber(24, first);
    setNumber(28, second);
    for (std::size_t i = 0; i < frameCount(); ++i) {
      add(frame(i), frame(i) + 8);
      add(frame(i) + 24, frame(i + 1));
      setNumber(frame(i) + 16, first);
      setNumber(frame(i) + 20, second);
    }
  }

  const Fixture::TemporaryDirectory folder_;
  const fs::path file_ = folder_ / "log";
  Fixture::Bytes database_;
  Fixture::Bytes log_;
  std::optional<SQLiteWALIndex> index_;
};

TEST_F(WriteAheadLog, ALogAsSQLiteWroteItIsSound) {
  ASSERT_GT(frameCount(), 5U);
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::sound, .frameCount = static_cast<std::int64_t>(frameCount())}));
  EXPECT_FALSE(read().isDamaged());
  EXPECT_FALSE(read(static_cast<std::int64_t>(log_.size())).isDamaged());
}

TEST_F(WriteAheadLog, ALogThatIsAbsentOrEmptyHoldsNothing) {
  EXPECT_EQ(SQLiteWAL::read(file_), SQLiteWAL());
  log_.clear();
  EXPECT_EQ(read(), SQLiteWAL());
  EXPECT_FALSE(read().isDamaged());
  EXPECT_FALSE(read(0).isDamaged());
}

TEST_F(WriteAheadLog, KnowsChecksumsInBothByteOrders) {
  const std::size_t middle = frame(2) + 100;
  sumInBigEndian();
  ASSERT_EQ(rowsForSQLite(), 3) << "the test's own log must be one for SQLite";
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::sound, .frameCount = static_cast<std::int64_t>(frameCount())}));
  flip(middle);
  EXPECT_EQ(read().state, State::damagedFrame);
}

TEST_F(WriteAheadLog, OneFlippedBitInAnyFrameButTheLastIsDamage) {
  ASSERT_EQ(rowsForSQLite(), 3);
  for (std::size_t i = 0; i + 1 < frameCount(); ++i) {
    for (const std::size_t place : {0UL, 8UL, 15UL, 16UL, 23UL, 24UL, 4119UL}) {
      flip(frame(i) + place);
      EXPECT_EQ(read().state, State::damagedFrame) << "frame " << i << ", byte " << place;
      EXPECT_LT(rowsForSQLite(), 3) << "SQLite loses rows and says nothing";
      flip(frame(i) + place);
    }
  }
}

TEST_F(WriteAheadLog, CountsTheFramesThatSQLiteTakes) {
  flip(frame(3) + 50);  // within the second transaction
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::damagedFrame, .frameCount = 1}));
  EXPECT_EQ(rowsForSQLite(), 1);
}

TEST_F(WriteAheadLog, OneFlippedBitInTheLastFrameIsDamageWhereTheIndexKnowsIt) {
  const std::size_t last = frameCount() - 1;
  EXPECT_EQ(readWithIndex(), read()) << "a whole log";
  for (const std::size_t place : {0UL, 4UL, 8UL, 15UL, 16UL, 23UL, 24UL, 4119UL}) {
    flip(frame(last) + place);
    EXPECT_FALSE(read().isDamaged()) << "as if the phone had stopped there, byte " << place;
    EXPECT_EQ(readWithIndex().state, State::damagedFrame) << "byte " << place;
    EXPECT_LT(rowsForSQLite(), 3);
    flip(frame(last) + place);
  }
  keepFrames(last);
  EXPECT_EQ(readWithIndex().state, State::damagedFrame) << "cut between two frames";
}

TEST_F(WriteAheadLog, AnIndexOfAnotherGenerationOrAnEarlierMomentSaysNothing) {
  const auto end = static_cast<std::int64_t>(frameCount());
  flip(frame(frameCount() - 1) + 100);
  index_->frameCount = end - 1;
  EXPECT_EQ(readWithIndex(), read());
  index_->frameCount = end;
  index_->salts[7] ^= 1;
  EXPECT_EQ(readWithIndex(), read());
  index_->salts[7] ^= 1;
  log_.clear();
  EXPECT_EQ(readWithIndex(), SQLiteWAL()) << "an app that closes its database may leave it so";
}

TEST_F(WriteAheadLog, ALogOfAnEarlierGenerationThanItsIndexKnowsIsDamage) {
  const auto next = [this] { ++index_->salts[3]; };
  next();
  EXPECT_EQ(readWithIndex().state, State::damagedFrame);
  const std::int64_t count = std::exchange(index_->frameCount, 0);
  EXPECT_EQ(readWithIndex(), read()) << "its log begins anew";
  index_->frameCount = count;
  index_->salts[0] ^= 0x10;
  EXPECT_EQ(readWithIndex(), read()) << "an index that was not written since the log was made anew";
}

TEST_F(WriteAheadLog, ATailOfZerosIsDamage) {
  for (std::size_t first = 0; first < frameCount(); ++first) {
    const Fixture::Bytes whole = log_;
    std::fill(log_.begin() + static_cast<std::ptrdiff_t>(frame(first)), log_.end(), std::uint8_t{0});
    EXPECT_EQ(read().state, State::damagedFrame) << first;
    log_ = whole;
    std::fill(log_.begin() + static_cast<std::ptrdiff_t>(frame(first) + 100), log_.end(), std::uint8_t{0});
    EXPECT_EQ(read().state, first + 1 < frameCount() ? State::damagedFrame : State::torn) << first;
    log_ = whole;
  }
}

TEST_F(WriteAheadLog, ADamagedHeaderIsDamage) {
  for (std::size_t i = 0; i < headerSize; ++i) {
    flip(i);
    EXPECT_EQ(read(), SQLiteWAL{.state = State::damagedHeader}) << i;
    flip(i);
  }
  for (const std::size_t length : {1UL, 31UL}) {
    log_.resize(length);
    EXPECT_EQ(read().state, State::damagedHeader) << length;
  }
  log_.assign(10'000, 0);
  EXPECT_EQ(read().state, State::damagedHeader) << "a hole in the file";
}

TEST_F(WriteAheadLog, ATransactionThatWasNeverFinishedIsNoDamage) {
  const std::size_t end = frameCount();
  keepFrames(end - 1);
  EXPECT_EQ(read().state, State::sound);
  keepFrames(3);
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::torn, .frameCount = 1}));
  flip(frame(2) + 100);
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::torn, .frameCount = 1}));
  EXPECT_FALSE(read().isDamaged());
  log_.resize(frame(2) + 24);
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::torn, .frameCount = 1})) << "half a frame";
}

TEST_F(WriteAheadLog, FramesOfARolledBackTransactionAreNoDamage) {
  // What a large transaction wrote ahead of its end, and what a small one wrote over the beginning of that.
  Fixture::DatabaseWriter writer(Fixture::Journal::walWithPendingRows);
  writer.execute("CREATE TABLE t (a)");
  writer.checkpoint();
  writer.execute("PRAGMA cache_size = 5; SAVEPOINT s; INSERT INTO t VALUES (zeroblob(200000)); ROLLBACK TO s");
  writer.execute("INSERT INTO t VALUES (1)");
  const Fixture::DatabaseFiles files = writer.finish();
  database_ = files.main;
  log_ = *files.wal;
  ASSERT_GT(frameCount(), 2U);
  ASSERT_EQ(rowsForSQLite(), 1);
  EXPECT_FALSE(read().isDamaged());
}

TEST_F(WriteAheadLog, FramesOfAnEarlierGenerationAreNoDamage) {
  sqlite3* handle = nullptr;
  const fs::path database = folder_ / "two.db";
  ASSERT_EQ(sqlite3_open(database.c_str(), &handle), SQLITE_OK);
  const auto execute = [&](const char* sql) {
    ASSERT_EQ(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
  };
  execute("PRAGMA journal_mode = WAL; CREATE TABLE t (a); INSERT INTO t VALUES (zeroblob(30000));");
  execute("PRAGMA wal_checkpoint(FULL); INSERT INTO t VALUES (2);");
  log_ = Fixture::readFile(folder_ / "two.db-wal");
  database_ = Fixture::readFile(database);
  sqlite3_close(handle);
  ASSERT_GT(frameCount(), 5U);
  EXPECT_EQ(read(), (SQLiteWAL{.state = State::sound, .frameCount = 1}));
  EXPECT_EQ(rowsForSQLite(), 2);
  flip(frame(0) + 500);
  EXPECT_EQ(read().state, State::torn) << "the generation's only frame";
}

TEST_F(WriteAheadLog, ALogShorterThanItWasRecordedIsCut) {
  const auto whole = static_cast<std::int64_t>(log_.size());
  EXPECT_EQ(read(whole + 1).state, State::cut);
  EXPECT_TRUE(read(whole + 1).isDamaged());
  EXPECT_EQ(read(whole - 1).state, State::sound) << "it grew afterwards";
  keepFrames(1);
  EXPECT_EQ(read(whole), (SQLiteWAL{.state = State::cut, .frameCount = 1}));
  log_.clear();
  EXPECT_EQ(read(whole).state, State::cut);
  fs::remove(file_);
  EXPECT_EQ(SQLiteWAL::read(file_, whole).state, State::cut);
}

TEST_F(WriteAheadLog, OnlyWhatIsNotThereIsAbsent) {
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_THROW(SQLiteWAL::read(file_), fs::filesystem_error);
  fs::remove(file_);
  fs::create_symlink(folder_ / "elsewhere", file_);
  EXPECT_THROW(SQLiteWAL::read(file_), fs::filesystem_error);
  fs::remove(file_);
  fs::create_directory(file_);
  EXPECT_THROW(SQLiteWAL::read(file_), fs::filesystem_error);
}

}  // namespace
