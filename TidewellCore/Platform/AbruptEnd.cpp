#include "TidewellCore/Platform/AbruptEnd.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include "TidewellCore/Platform/TemporaryFolder.h"

namespace {

// What a handler, which may do little, has of the thread.
std::atomic<int> writeEnd = -1;
std::atomic<int> exitCode = 0;

void waitAndEnd(int readEnd, void (*atLast)()) {
  char byte = 0;
  while (::read(readEnd, &byte, 1) < 0 && errno == EINTR) {
  }
  TemporaryFolder::removeAllForGood();
  if (atLast != nullptr) atLast();
  ::_exit(exitCode);
}

// A new thread has its maker's: so the handlers run on the others, whose waiting they are to end.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

void AbruptEnd::prepare(int code, void (*atLast)()) {
  exitCode = code;
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
  // A handler must never wait, however many signals come.
  ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
  const AllSignalsBlocked blocked;
  try {
    std::thread(waitAndEnd, ends[0], atLast).detach();
    writeEnd = ends[1];
  } catch (const std::system_error&) {
    for (const int end : ends) ::close(end);
  }
}

void AbruptEnd::request() noexcept {
  const int errorBefore = errno;
  const char byte = 0;
  if (::write(writeEnd, &byte, 1) < 0 && errno != EAGAIN) ::_exit(exitCode);
  errno = errorBefore;
}
