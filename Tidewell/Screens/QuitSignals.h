#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <array>

// Lets SIGINT, SIGTERM and SIGHUP end the application as closing its window does,
// so that no decrypted working copy is left behind. One for the process, made before what it ends.
class QuitSignals : public QObject {
 public:
  QuitSignals();
  ~QuitSignals() override;

 private:
  std::array<int, 2> pipe_{};  // from the handler, which may do little, to the event loop
  QSocketNotifier notifier_;
};
