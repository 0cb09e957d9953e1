#pragma once

#include <QQmlApplicationEngine>

#include "Tidewell/Screens/Texts.h"

class Appearance;
class FolderPrompt;
class QQuickWindow;
class WizardScreens;

// Loads the window and keeps it; the window goes with it.
class WizardEngine : public QQmlApplicationEngine {
  Q_OBJECT

 public:
  // What the window shows and asks; all of it must outlive the engine.
  struct Parts {
    WizardScreens& screens;
    FolderPrompt& folders;
    Appearance& appearance;
    const L10n& texts;
  };
  explicit WizardEngine(const Parts& parts);

  // The engine itself, from where a screen's singleton is asked for.
  static WizardEngine& of(QQmlEngine* engine);

  // Null when it could not be loaded; the reasons are on the console.
  QQuickWindow* window() const;
  Texts* texts() { return &texts_; }
  Appearance* appearance() { return &appearance_; }

 private:
  Texts texts_;
  Appearance& appearance_;
};
