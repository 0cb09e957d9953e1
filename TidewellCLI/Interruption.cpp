#include "TidewellCLI/Interruption.h"

#include <unistd.h>

#include <csignal>

#include "TidewellCLI/Output.h"

namespace {

// The only thing that a signal handler may touch.
volatile std::sig_atomic_t isInterrupted = 0;

extern "C" void interrupt(int) {
  if (isInterrupted != 0) ::_exit(ExitCode::interrupted);
  isInterrupted = 1;
}

}  // namespace

void Interruption::install() {
  struct sigaction action {};
  action.sa_handler = interrupt;
  ::sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
  // A reader that goes away must not keep the work from cleaning up.
  std::signal(SIGPIPE, SIG_IGN);
}

CancellationCheck Interruption::check() {
  return [] { return isInterrupted != 0; };
}
