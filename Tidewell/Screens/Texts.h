#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QStringList>

#include "Tidewell/Services/L10n.h"

class QJSEngine;
class QQmlEngine;

// The string table, for the screens. Its texts do not change while a window is open.
class Texts : public QObject {
  Q_OBJECT
  QML_NAMED_ELEMENT(L10n)
  QML_SINGLETON

 public:
  // `texts` must outlive it.
  explicit Texts(const L10n& texts) : texts_(texts) {}
  // The one of that engine, which must be a WizardEngine.
  static Texts* create(QQmlEngine* engine, QJSEngine*);

  Q_INVOKABLE QString text(const QString& english) const { return texts_.text(english); }
  Q_INVOKABLE QString format(const QString& english, const QStringList& values) const {
    return texts_.format(english, values);
  }
  Q_INVOKABLE QString joined(const QStringList& pieces, const QString& separator) const {
    return texts_.joined(pieces, separator);
  }

 private:
  const L10n& texts_;
};
