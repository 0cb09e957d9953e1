#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <array>

// Lets SIGINT, SIGTERM, SIGHUP and SIGQUIT end the application as closing its window
// does, so that no decrypted working copy is left behind; a second one of a kind but
// SIGHUP ends it at once, with the same care for working copies. One for the process, made before what it ends.
class QuitSignals : public QObject {
 public:
  QuitSignals();
  ~QuitSignals() override;

 private:
  std::array<int, 2> pipe_{};  // from the handler, which may do little, to the event loop
  QSocketNotifier notifier_;
};
