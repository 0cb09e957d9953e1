#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>

class QJSEngine;
class QQmlEngine;

// How the user wants windows to look.
class Appearance : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool isDark READ isDark WRITE setDark NOTIFY isDarkChanged)
  Q_PROPERTY(bool reducesMotion READ reducesMotion WRITE setReducesMotion NOTIFY reducesMotionChanged)

 public:
  // Not by default, since the engine would then make one of its own.
  Appearance(bool isDark, bool reducesMotion) : isDark_(isDark), reducesMotion_(reducesMotion) {}
  // The one of that engine, which must be a WizardEngine.
  static Appearance* create(QQmlEngine* engine, QJSEngine*);

  bool isDark() const { return isDark_; }
  bool reducesMotion() const { return reducesMotion_; }
  void setDark(bool dark);
  void setReducesMotion(bool reduces);

 signals:
  void isDarkChanged();
  void reducesMotionChanged();

 private:
  bool isDark_;
  bool reducesMotion_;
};
