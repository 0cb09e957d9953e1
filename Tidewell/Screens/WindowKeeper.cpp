#include "Tidewell/Screens/WindowKeeper.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <utility>

namespace {

QList<QRect> freeSpaces() {
  QList<QRect> spaces;
  for (const QScreen* screen : QGuiApplication::screens()) spaces.append(screen->availableGeometry());
  return spaces;
}

// Elsewhere only the desktop knows where windows are.
bool windowsKnowTheirPlace() { return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland")); }

}  // namespace

WindowKeeper::WindowKeeper(QQuickWindow& window, std::filesystem::path file) : window_(window), file_(std::move(file)) {
  const WindowPlace wish = WindowPlace::load(file_).value_or(WindowPlace{.size = window.size(), .corner = {}});
  const QRect place = wish.on(freeSpaces(), window.minimumSize());
  window.setMinimumSize(window.minimumSize().boundedTo(place.size()));
  if (windowsKnowTheirPlace())
    window.setGeometry(place);
  else
    window.resize(place.size());
  given_ = present();
  settled_.setSingleShot(true);
  settled_.setInterval(300);
  connect(&settled_, &QTimer::timeout, this, &WindowKeeper::note);
  for (const auto changed : {&QWindow::xChanged, &QWindow::yChanged, &QWindow::widthChanged, &QWindow::heightChanged})
    connect(&window, changed, &settled_, qOverload<>(&QTimer::start));
}

WindowKeeper::~WindowKeeper() {
  if (settled_.isActive() || window_.isVisible()) note();
  try {
    if (chosen_) chosen_->save(file_);
  } catch (const std::exception&) {
    // The next window is as large as by default.
  }
}

WindowPlace WindowKeeper::present() const {
  return {.size = window_.size(), .corner = windowsKnowTheirPlace() ? std::optional(window_.position()) : std::nullopt};
}

void WindowKeeper::note() {
  if (window_.windowStates() == Qt::WindowNoState && present() != given_) chosen_ = present();
}
