#include "Tidewell/Screens/Appearance.h"

#include "Tidewell/Screens/WizardEngine.h"

Appearance* Appearance::create(QQmlEngine* engine, QJSEngine*) { return WizardEngine::of(engine).appearance(); }

void Appearance::setDark(bool dark) {
  if (isDark_ == dark) return;
  isDark_ = dark;
  emit isDarkChanged();
}

void Appearance::setReducesMotion(bool reduces) {
  if (reducesMotion_ == reduces) return;
  reducesMotion_ = reduces;
  emit reducesMotionChanged();
}
