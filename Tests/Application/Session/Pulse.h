#pragma once

#include <QTimer>
#include <algorithm>
#include <chrono>

namespace WizardTest {

using Milliseconds = std::chrono::duration<double, std::milli>;

// No longer may the window stand still.
inline constexpr Milliseconds longestStandstill(50);
// Another program may keep both processors for that long; the wizard does its own delays every time.
inline constexpr int attempts = 3;

// Fires as often as it can on the interface thread, and keeps the longest time between two firings.
class Pulse {
 public:
  Pulse() {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { beat(); });
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.start(1);
  }

  Milliseconds longest() {
    beat();
    return longest_;
  }
  int count() const { return count_; }

 private:
  using Clock = std::chrono::steady_clock;

  void beat() {
    const Clock::time_point now = Clock::now();
    longest_ = std::max(longest_, Milliseconds(now - last_));
    last_ = now;
    ++count_;
  }

  QTimer timer_;
  Clock::time_point last_ = Clock::now();
  Milliseconds longest_{0};
  int count_ = 0;
};

}  // namespace WizardTest
