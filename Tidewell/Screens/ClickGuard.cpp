#include "Tidewell/Screens/ClickGuard.h"

#include <QGuiApplication>
#include <QQuickWindow>

namespace {

bool isOfButtons(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
      return true;
    default:
      return false;
  }
}

}  // namespace

ClickGuard::ClickGuard(QQuickItem* parent) : QQuickItem(parent) {
  setVisible(false);
  setAcceptedMouseButtons(Qt::AllButtons);
  setAcceptTouchEvents(true);
  rest_.setSingleShot(true);
  rest_.setInterval(500);
  connect(&rest_, &QTimer::timeout, this, &ClickGuard::endWhenNothingIsHeld);
}

void ClickGuard::setInterval(int milliseconds) {
  if (interval() == milliseconds) return;
  rest_.setInterval(milliseconds);
  emit intervalChanged();
}

void ClickGuard::start() {
  setVisible(true);
  rest_.start();
}

// At the window, since a release goes to whatever was pressed, which may be gone.
void ClickGuard::itemChange(ItemChange change, const ItemChangeData& value) {
  if (change == ItemSceneChange && value.window != nullptr) value.window->installEventFilter(this);
  QQuickItem::itemChange(change, value);
}

bool ClickGuard::eventFilter(QObject* watched, QEvent* event) {
  if (rest_.isActive() && isOfButtons(event->type())) rest_.start();
  return QQuickItem::eventFilter(watched, event);
}

void ClickGuard::endWhenNothingIsHeld() {
  if (QGuiApplication::mouseButtons() != Qt::NoButton) return rest_.start();
  setVisible(false);
}

void ClickGuard::mousePressEvent(QMouseEvent* event) { event->accept(); }

void ClickGuard::touchEvent(QTouchEvent* event) { event->accept(); }
