#pragma once

#include <functional>

// Asked between the steps of long work, on the thread that does it; true ends
// the work. An empty check never cancels.
using CancellationCheck = std::function<bool()>;

// Throws TidewellError::cancelled when the check says so.
void throwIfCancelled(const CancellationCheck& isCancelled);

// Asks the check now and then, for work of many small steps.
class CancellationPoint {
 public:
  // The check must outlive it.
  explicit CancellationPoint(const CancellationCheck& isCancelled) : isCancelled_(isCancelled) {}

  // One more step. Throws TidewellError::cancelled when the check is asked and says so.
  void step() {
    if (++steps_ % stepsPerQuestion == 0) throwIfCancelled(isCancelled_);
  }

 private:
  static constexpr unsigned stepsPerQuestion = 256;

  const CancellationCheck& isCancelled_;
  unsigned steps_ = 0;
};
