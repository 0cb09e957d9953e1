#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>

class QJSEngine;
class QQmlEngine;

// How the user wants windows to look. Starts out light and moving.
class Appearance : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool isDark READ isDark WRITE setDark NOTIFY isDarkChanged)
  Q_PROPERTY(bool reducesMotion READ reducesMotion WRITE setReducesMotion NOTIFY reducesMotionChanged)

 public:
  Appearance() = default;
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
  bool isDark_ = false;
  bool reducesMotion_ = false;
};
