#include "TidewellCLI/Interruption.h"

#include <csignal>

#include "TidewellCLI/Output.h"
#include "TidewellCore/Platform/AbruptEnd.h"

namespace {

volatile std::sig_atomic_t isInterrupted = 0;

extern "C" void interrupt(int) {
  if (isInterrupted != 0) AbruptEnd::request();
  isInterrupted = 1;
}

// What the caller has the program ignore stays ignored: `nohup` a logout, a script the Ctrl-C that is
// meant for its other commands.
void handleUnlessIgnored(int signal, const struct sigaction& action) {
  struct sigaction before {};
  ::sigaction(signal, nullptr, &before);
  if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
}

}  // namespace

void Interruption::install(void (*atLast)()) {
  AbruptEnd::prepare(ExitCode::interrupted, atLast);
  struct sigaction action {};
  action.sa_handler = interrupt;
  ::sigemptyset(&action.sa_mask);
  for (const int signal : AbruptEnd::endingSignals) handleUnlessIgnored(signal, action);
  // A reader that goes away must not keep the work from cleaning up; a file that
  // may not grow so long is the failure of the one who writes it.
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

CancellationCheck Interruption::check() {
  return [] { return isInterrupted != 0; };
}
