#pragma once

#include <gtest/gtest.h>

#include <QObject>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "Tidewell/Session/BackgroundWork.h"

namespace WizardTest {

// Longer than any wait of these tests takes, on the slowest machine.
inline constexpr std::chrono::seconds deadline(60);

// Keeps threads waiting until it is opened, at most until the deadline.
class Gate {
 public:
  void open() {
    const std::lock_guard guard(lock_);
    isOpen_ = true;
    opened_.notify_all();
  }
  bool wait() {
    std::unique_lock guard(lock_);
    return opened_.wait_for(guard, deadline, [this] { return isOpen_; });
  }

 private:
  std::mutex lock_;
  std::condition_variable opened_;
  bool isOpen_ = false;
};

// Keeps threads of a lane busy for as long as it lives, so that what is asked
// for meanwhile waits, or goes one after another through the one thread left.
class HeldLane {
 public:
  HeldLane(BackgroundWork& work, BackgroundWork::Lane lane, int threads) : work_(work), lane_(lane) {
    for (int i = 0; i < threads; ++i) {
      work_.run(
          lane_, &context_,
          [gate = gate_, begun = begun_] {
            ++*begun;
            gate->wait();
          },
          [](const std::future<void>&) {});
    }
    waitFor(threads);
  }
  ~HeldLane() { gate_->open(); }
  HeldLane(const HeldLane&) = delete;
  HeldLane& operator=(const HeldLane&) = delete;

  // With one thread left: returns when it has done what was asked for before.
  // No event is taken up meanwhile, so the results are still on their way.
  void finishWhatWasAsked() {
    work_.run(
        lane_, &context_, [begun = begun_] { ++*begun; }, [](const std::future<void>&) {});
    waitFor(before_ + 1);
  }

 private:
  void waitFor(int count) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (*begun_ < count && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    EXPECT_EQ(*begun_, count) << "the lane's threads did not begin";
    before_ = count;
  }

  BackgroundWork& work_;
  BackgroundWork::Lane lane_;
  QObject context_;
  std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
  std::shared_ptr<std::atomic<int>> begun_ = std::make_shared<std::atomic<int>>(0);
  int before_ = 0;
};

}  // namespace WizardTest
