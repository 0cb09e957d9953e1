#pragma once

#include <QtQml/qqmlregistration.h>
#include <QQuickItem>
#include <QString>

// What a dialog may lie over. While one does, assistive technology finds nothing in it: Qt
// keeps the mouse and the Tab key out by itself, but not those. Its item needs an
// `Accessible.role`, without which Qt takes it for no part of the window.
class Backdrop : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(bool covered MEMBER covered_ NOTIFY coveredChanged)
  // What it is called by assistive technology.
  Q_PROPERTY(QString caption MEMBER caption_ NOTIFY captionChanged)

 public:
  explicit Backdrop(QQuickItem* parent = nullptr);

  bool isCovered() const { return covered_; }
  const QString& caption() const { return caption_; }

 signals:
  void coveredChanged();
  void captionChanged();

 private:
  bool covered_ = false;
  QString caption_;
};
