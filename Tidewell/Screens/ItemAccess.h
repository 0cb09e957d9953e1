#pragma once

#include <QAccessible>
#include <QAccessibleObject>
#include <QQuickItem>
#include <QQuickWindow>

// What every item that answers assistive technology for itself has in common: where it is,
// and what it is part of. The item lives longer.
class ItemAccess : public QAccessibleObject {
 public:
  explicit ItemAccess(QQuickItem* item) : QAccessibleObject(item) {}

  QWindow* window() const override { return item().window(); }
  QAccessibleInterface* parent() const override {
    for (QQuickItem* around = item().parentItem(); around != nullptr; around = around->parentItem()) {
      if (QAccessibleInterface* found = QAccessible::queryAccessibleInterface(around)) return found;
    }
    return QAccessible::queryAccessibleInterface(item().window());
  }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.disabled = !item().isEnabled();
    state.invisible = !item().isVisible();
    return state;
  }
  QRect rect() const override {
    if (item().window() == nullptr) return {};
    const QRect place = item().mapRectToScene(item().boundingRect()).toRect();
    return place.translated(item().window()->mapToGlobal(QPoint()));
  }

 protected:
  QQuickItem& item() const { return *static_cast<QQuickItem*>(object()); }
};
