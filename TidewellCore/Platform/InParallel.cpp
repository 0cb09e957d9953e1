#include "TidewellCore/Platform/InParallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

// As much as is worth asking for at once, and as is worth a thread.
constexpr std::size_t block = 64;
constexpr std::size_t fewestOfThread = 512;

using Work = std::function<void(std::size_t begin, std::size_t end)>;

class Run {
 public:
  Run(std::size_t count, const Work& work) : count_(count), work_(work) {}

  // On each of the threads, until nothing is left.
  void takeBlocks(const CancellationCheck& isCancelled = {}) try {
    while (!isEnding_) {
      throwIfCancelled(isCancelled);
      const std::size_t begin = next_.fetch_add(block);
      if (begin >= count_) return;
      work_(begin, std::min(begin + block, count_));
    }
  } catch (...) {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
    isEnding_ = true;
  }

  // When all threads have ended.
  void throwFailure() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  const std::size_t count_;
  const Work& work_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> isEnding_ = false;
  std::mutex mutex_;
  std::exception_ptr failure_;  // the first one
};

}  // namespace

void InParallel::forEachBlock(std::size_t count, const Work& work, const CancellationCheck& isCancelled) {
  Run run(count, work);
  {
    std::vector<std::jthread> others;
    const std::size_t threads = std::min<std::size_t>(std::thread::hardware_concurrency(), count / fewestOfThread);
    try {
      while (others.size() + 1 < threads) others.emplace_back([&run] { run.takeBlocks(); });
    } catch (const std::system_error&) {
      // Where the system gives no more threads, those that are there do the work.
    }
    run.takeBlocks(isCancelled);
  }
  run.throwFailure();
}
