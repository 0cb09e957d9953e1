#include "TidewellCore/Export/CopyAhead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "Tests/Support/Failures.h"
#include "Tests/Support/RefusedCall.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportPlanner::PlannedCopy;

class CopyAheadTest : public testing::Test {
 protected:
  static std::vector<PlannedCopy> copiesOf(std::size_t count, std::int64_t size = 1) {
    std::vector<PlannedCopy> copies(count);
    for (std::size_t i = 0; i < count; ++i) {
      copies[i].dest = {.folder = "Ana", .name = std::to_string(i)};
      copies[i].sourceSize = size;
    }
    return copies;
  }
  WrittenCopy write(const PlannedCopy& copy) const {
    PartialFile partial(folder_.path() / copy.dest.name);
    Fixture::writeFile(partial.path(), copy.dest.name);
    return {.copy = &copy, .partial = std::move(partial)};
  }
  bool holdsFiles() const { return !fs::is_empty(folder_.path()); }

  const Fixture::TemporaryDirectory folder_;
};

TEST_F(CopyAheadTest, FilesAreTakenInTheOrderOfTheirCopies) {
  std::vector<PlannedCopy> copies = copiesOf(1'000);
  for (std::size_t i = 0; i < copies.size(); i += 3) copies[i].fate = ExportPlanner::Present{};
  CopyAhead ahead(copies, [this](const PlannedCopy& copy, const CancellationCheck&) { return write(copy); });
  for (const PlannedCopy& copy : copies) {
    if (copy.alreadyPresent()) continue;
    const WrittenCopy written = ahead.take(copy, {});
    ASSERT_EQ(written.copy, &copy);
    ASSERT_EQ(fs::file_size(written.partial.path()), copy.dest.name.size());
  }
  EXPECT_FALSE(holdsFiles());
}

TEST_F(CopyAheadTest, AFailureIsTheOneOfItsCopy) {
  const std::vector<PlannedCopy> copies = copiesOf(300);
  CopyAhead ahead(copies, [this](const PlannedCopy& copy, const CancellationCheck&) {
    if (copy.dest.name.ends_with('7')) throw std::runtime_error(copy.dest.name);
    return write(copy);
  });
  for (const PlannedCopy& copy : copies) {
    if (!copy.dest.name.ends_with('7')) {
      EXPECT_EQ(ahead.take(copy, {}).copy, &copy);
      continue;
    }
    try {
      ahead.take(copy, {});
      ADD_FAILURE() << copy.dest.name;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), copy.dest.name);
    }
  }
}

TEST_F(CopyAheadTest, IsNotFarAhead) {
  const std::vector<PlannedCopy> small = copiesOf(1'000);
  const std::vector<PlannedCopy> large = copiesOf(20, std::int64_t{40} << 20);
  for (const auto& [copies, most] : {std::pair(&small, 128), std::pair(&large, 2)}) {
    std::atomic<int> begun = 0;
    CopyAhead ahead(*copies, [&](const PlannedCopy& copy, const CancellationCheck&) {
      ++begun;
      return write(copy);
    });
    int taken = 0;
    for (const PlannedCopy& copy : *copies) {
      const WrittenCopy file = ahead.take(copy, {});
      ++taken;
      if (taken % 10 == 1) std::this_thread::sleep_for(std::chrono::milliseconds(2));
      ASSERT_LE(begun - taken, most);
    }
  }
}

// A limit on threads that is reached for a moment, in a process of its own.
TEST_F(CopyAheadTest, WithoutThreadsTheCallerWritesAllOfThem) {
  const std::vector<PlannedCopy> copies = copiesOf(20);
  const auto takeAll = [&] {
    CopyAhead ahead(copies, [this](const PlannedCopy& copy, const CancellationCheck&) { return write(copy); });
    Fixture::refuseCallOnce(SYS_clone3, EAGAIN);
    for (const PlannedCopy& copy : copies) {
      if (ahead.take(copy, {}).copy != &copy) ::_exit(1);
    }
    ::_exit(0);
  };
  EXPECT_EXIT(takeAll(), testing::ExitedWithCode(0), "");
}

TEST_F(CopyAheadTest, ACopyThatIsNotTheNextOneIsRefused) {
  const std::vector<PlannedCopy> copies = copiesOf(3);
  CopyAhead ahead(copies, [this](const PlannedCopy& copy, const CancellationCheck&) { return write(copy); });
  ahead.take(copies[0], {});
  EXPECT_THROW(ahead.take(copies[2], {}), std::logic_error);
}

TEST_F(CopyAheadTest, WhatIsNotTakenIsDropped) {
  const std::vector<PlannedCopy> copies = copiesOf(100);
  {
    CopyAhead ahead(copies, [this](const PlannedCopy& copy, const CancellationCheck&) { return write(copy); });
    ahead.take(copies[0], {});
  }
  EXPECT_FALSE(holdsFiles());
}

TEST_F(CopyAheadTest, OnAFullDiskWhatIsAheadGivesWay) {
  const std::vector<PlannedCopy> copies = copiesOf(100);
  constexpr std::ptrdiff_t room = 3;  // for so many files
  std::mutex disk;
  CopyAhead ahead(copies, [&](const PlannedCopy& copy, const CancellationCheck&) {
    const std::lock_guard lock(disk);
    const bool isFull = std::distance(fs::directory_iterator(folder_.path()), {}) >= room;
    if (isFull) throw fs::filesystem_error("full", std::make_error_code(std::errc::no_space_on_device));
    return write(copy);
  });
  std::vector<WrittenCopy> files;
  for (std::size_t i = 0; i < room; ++i) files.push_back(ahead.take(copies[i], {}));
  EXPECT_EQ(files.back().copy, &copies[room - 1]);
  EXPECT_THROW(ahead.take(copies[room], {}), fs::filesystem_error);
}

TEST_F(CopyAheadTest, WhoIsCancelledWaitsForNoFile) {
  const std::vector<PlannedCopy> copies = copiesOf(100);
  std::atomic<bool> isCancelled = false;
  CopyAhead ahead(copies, [&](const PlannedCopy& copy, const CancellationCheck& isUnwanted) {
    while (copy.dest.name == "1") {
      isCancelled = true;
      throwIfCancelled(isUnwanted);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return write(copy);
  });
  ahead.take(copies[0], {});
  EXPECT_THROW(ahead.take(copies[1], [&] { return isCancelled.load(); }), TidewellError);
  EXPECT_THROW(ahead.take(copies[2], {}), TidewellError) << "it has ended";
}

}  // namespace
