#include "Tidewell/Screens/QuitSignals.h"

#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>

#include "TidewellCore/Platform/AbruptEnd.h"

namespace {

constexpr int exitCodeOfInterruption = 130;
std::atomic<int> writeEnd = -1;
std::atomic<std::uint64_t> seen = 0;  // a bit for each signal

bool isSecond(int signal) {
  const std::uint64_t bit = std::uint64_t{1} << signal;
  return (seen.fetch_or(bit) & bit) != 0;
}

// A second signal ends the process at once. Not so a second SIGHUP: where a
// terminal is closed, its shell sends one and the kernel another.
void handle(int signal) {
  const int errorBefore = errno;
  if (isSecond(signal)) {
    if (signal != SIGHUP) AbruptEnd::request();
    return;
  }
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
  AbruptEnd::prepare(exitCodeOfInterruption);
  for (const int signal : AbruptEnd::endingSignals) std::signal(signal, handle);
  // A file that may not grow so long is a failure to tell. Handled, not ignored: what is started from here shall not
  // ignore it.
  std::signal(SIGXFSZ, [](int) {});
}

// The handler stays: the process is at its end, and a first signal has nothing left to tell.
QuitSignals::~QuitSignals() {
  writeEnd = -1;
  for (const int end : pipe_) ::close(end);
}
