#pragma once

#include <mutex>

// Set by the interface thread to end a running scan or export, polled by the
// thread that works. Shared; one for each run.
class CancellationToken {
 public:
  void cancel() {
    const std::lock_guard guard(lock_);
    cancelled_ = true;
  }
  bool isCancelled() const {
    const std::lock_guard guard(lock_);
    return cancelled_;
  }

 private:
  mutable std::mutex lock_;
  bool cancelled_ = false;
};
