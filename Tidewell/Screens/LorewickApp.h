#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "Tidewell/Screens/Appearance.h"
#include "Tidewell/Screens/FolderPrompt.h"
#include "Tidewell/Screens/WindowKeeper.h"
#include "Tidewell/Screens/WizardEngine.h"
#include "Tidewell/Screens/WizardScreens.h"
#include "Tidewell/Session/BackgroundWork.h"
#include "Tidewell/Session/ExportViewModel.h"

// The application: one controller and the window that shows it. Needs a
// QGuiApplication, and goes in the opposite order: window, controller, workers.
class LorewickApp {
 public:
  // What `setup.services` leaves out of chooser, workspace, presence and clock is the desktop's own.
  explicit LorewickApp(ExportViewModel::Setup setup);

  ExportViewModel& controller() { return controller_; }
  WizardScreens& screens() { return screens_; }
  FolderPrompt& folders() { return folders_; }
  Appearance& appearance() { return appearance_; }
  // Null when it could not be loaded.
  QQuickWindow* window() const { return engine_.window(); }

 private:
  static ExportViewModel::Setup completed(ExportViewModel::Setup setup, FolderPrompt& folders);

  L10n texts_;
  BackgroundWork work_;
  FolderPrompt folders_;
  Appearance appearance_{false, false};
  ExportViewModel controller_;
  WizardScreens screens_;
  WizardEngine engine_;
  std::unique_ptr<WindowKeeper> keeper_;  // null without a window
};
