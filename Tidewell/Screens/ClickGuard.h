#pragma once

#include <QQuickItem>
#include <QTimer>

// Lies over controls that have just taken the place of others, and takes the clicks that
// were meant for those: until no button of the pointer was down for `interval`
// milliseconds. Nothing is seen of it, and keys pass. It is visible while it guards.
class ClickGuard : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(int interval READ interval WRITE setInterval NOTIFY intervalChanged)

 public:
  explicit ClickGuard(QQuickItem* parent = nullptr);

  int interval() const { return rest_.interval(); }
  void setInterval(int milliseconds);

  // The controls have just changed.
  Q_INVOKABLE void start();

 signals:
  void intervalChanged();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void itemChange(ItemChange change, const ItemChangeData& value) override;
  void mousePressEvent(QMouseEvent* event) override;
  void touchEvent(QTouchEvent* event) override;

 private:
  void endWhenNothingIsHeld();

  QTimer rest_;  // since the last press or release
};
