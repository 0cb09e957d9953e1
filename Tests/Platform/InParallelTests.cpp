#include "TidewellCore/Platform/InParallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "TidewellCore/TidewellError.h"

namespace {

constexpr std::size_t many = 20'000;

TEST(InParallel, DoesEachStepOnce) {
  for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{63}, std::size_t{65}, many}) {
    std::vector<int> steps(count);
    InParallel::forEachBlock(count, [&](std::size_t begin, std::size_t end) {
      for (std::size_t i = begin; i < end; ++i) ++steps[i];
    });
    EXPECT_EQ(steps, std::vector<int>(count, 1)) << count;
  }
}

TEST(InParallel, LittleIsDoneByTheCallerAlone) {
  const std::thread::id caller = std::this_thread::get_id();
  InParallel::forEachBlock(500, [&](std::size_t, std::size_t) { EXPECT_EQ(std::this_thread::get_id(), caller); });
}

TEST(InParallel, PassesOnWhatAStepThrows) {
  for (const std::size_t culprit : {std::size_t{0}, many - 1}) {
    const auto work = [&](std::size_t begin, std::size_t end) {
      if (begin <= culprit && culprit < end) throw std::out_of_range("a step");
    };
    EXPECT_THROW(InParallel::forEachBlock(many, work), std::out_of_range);
  }
}

TEST(InParallel, IsCancelledFromTheCallingThread) {
  const std::thread::id caller = std::this_thread::get_id();
  std::atomic<std::size_t> done = 0;
  const auto isCancelled = [&] {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    return done > 0;
  };
  try {
    const auto work = [&](std::size_t begin, std::size_t end) {
      // The others do not come to the end while the caller waits for its turn.
      if (std::this_thread::get_id() != caller) std::this_thread::sleep_for(std::chrono::milliseconds(10));
      done += end - begin;
    };
    InParallel::forEachBlock(1'000'000, work, isCancelled);
    FAIL() << "it went on";
  } catch (const TidewellError& error) {
    EXPECT_TRUE(TidewellError::isCancellation(error));
  }
  EXPECT_LT(done, 1'000'000U);
}

}  // namespace
