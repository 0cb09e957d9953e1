#pragma once

#include <QObject>
#include <QTimer>
#include <filesystem>
#include <optional>

#include "Tidewell/Screens/WindowPlace.h"

class QQuickWindow;

// Gives a window that is not yet seen the size and place that it had last, as far as the
// screens of now have room, and keeps in a file what the user makes of them.
class WindowKeeper : public QObject {
 public:
  // `window` must outlive it, and has the size and the least size that it is to have by default.
  WindowKeeper(QQuickWindow& window, std::filesystem::path file);
  ~WindowKeeper() override;

 private:
  WindowPlace present() const;
  void note();

  QQuickWindow& window_;
  std::filesystem::path file_;
  QTimer settled_;  // a window that is maximized changes first and says so later
  WindowPlace given_;
  std::optional<WindowPlace> chosen_;  // by the user
};
