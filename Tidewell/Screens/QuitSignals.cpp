#include "Tidewell/Screens/QuitSignals.h"

#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace {

constexpr std::array handled{SIGINT, SIGTERM, SIGHUP};
std::atomic<int> writeEnd = -1;

// A second signal finds the default action in place and ends the process at once. Not so a second
// SIGHUP: where a terminal is closed, its shell sends one and the kernel another.
void handle(int signal) {
  const int errorBefore = errno;
  std::signal(signal, signal == SIGHUP ? SIG_IGN : SIG_DFL);
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
  errno = errorBefore;
}

int makePipe(std::array<int, 2>& ends) {
  if (::pipe(ends.data()) != 0) throw std::system_error(errno, std::generic_category());
  return ends[0];
}

}  // namespace

QuitSignals::QuitSignals() : notifier_(makePipe(pipe_), QSocketNotifier::Read) {
  connect(&notifier_, &QSocketNotifier::activated, [this] {
    notifier_.setEnabled(false);
    QCoreApplication::quit();
  });
  writeEnd = pipe_[1];
  for (const int signal : handled) std::signal(signal, handle);
}

// The handler stays: the process is at its end, and a first signal has nothing left to tell.
QuitSignals::~QuitSignals() {
  writeEnd = -1;
  for (const int end : pipe_) ::close(end);
}
