#include "TidewellCore/Platform/SQLiteWALIndex.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace Fixture {
namespace {

constexpr std::size_t headerSize = 48;
constexpr std::size_t frameSize = 24 + 4096;

// The index of a log of several transactions, as SQLite wrote it.
class WriteAheadLogIndex : public testing::Test {
 protected:
  void SetUp() override {
    DatabaseWriter writer(Journal::walWithPendingRows);
    writer.execute("CREATE TABLE t (a); COMMIT; BEGIN; INSERT INTO t VALUES (zeroblob(30000))");
    const DatabaseFiles files = writer.finish();
    log_ = *files.wal;
    index_ = *files.shm;
  }

  std::optional<SQLiteWALIndex> read() const {
    writeFile(file_, index_);
    return SQLiteWALIndex::read(file_);
  }

  const TemporaryDirectory folder_;
  const std::filesystem::path file_ = folder_ / "index";
  Bytes log_;
  Bytes index_;
};

TEST_F(WriteAheadLogIndex, NamesTheGenerationAndTheLastFrameOfItsLog) {
  const auto index = read();
  ASSERT_TRUE(index);
  EXPECT_EQ(index->frameCount, static_cast<std::int64_t>((log_.size() - 32) / frameSize));
  EXPECT_TRUE(std::equal(index->salts.begin(), index->salts.end(), log_.begin() + 16));
}

TEST_F(WriteAheadLogIndex, ABitThatIsFlippedInItsHeaderMakesItSayNothing) {
  for (std::size_t i = 0; i < 2 * headerSize; ++i) {
    index_[i] ^= 1;
    EXPECT_FALSE(read()) << i;
    index_[i] ^= 1;
  }
  index_[2 * headerSize] ^= 1;
  EXPECT_TRUE(read()) << "what is beyond changes while the log is read";
}

TEST_F(WriteAheadLogIndex, TheSameBitFlippedInBothCopiesIsFoundByTheirSum) {
  for (std::size_t i = 0; i < headerSize; ++i) {
    index_[i] ^= 1;
    index_[i + headerSize] ^= 1;
    EXPECT_FALSE(read()) << i;
    index_[i] ^= 1;
    index_[i + headerSize] ^= 1;
  }
}

TEST_F(WriteAheadLogIndex, OneOfAMachineOfTheOtherByteOrderSaysNothing) {
  for (std::size_t i = 0; i < 2 * headerSize; i += 4) std::reverse(&index_[i], &index_[i] + 4);
  EXPECT_FALSE(read());
}

TEST_F(WriteAheadLogIndex, OneThatIsAbsentCutOrNoFileSaysNothing) {
  EXPECT_FALSE(SQLiteWALIndex::read(file_));
  index_.resize(2 * headerSize - 1);
  EXPECT_FALSE(read());
  index_.assign(32'768, 0);
  EXPECT_FALSE(read()) << "zeroed, as it is before its first use";
  std::filesystem::remove(file_);
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_FALSE(SQLiteWALIndex::read(file_));
}

}  // namespace
}  // namespace Fixture
