#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>

// Where a text goes that somebody wants to use elsewhere.
class Clipboard : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  Q_INVOKABLE void copy(const QString& text) const;
};
