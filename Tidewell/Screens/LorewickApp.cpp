#include "Tidewell/Screens/LorewickApp.h"

#include <QGuiApplication>
#include <QStandardPaths>
#include <chrono>

#include "Tidewell/Screens/DesktopPresence.h"
#include "Tidewell/Screens/DesktopWorkspace.h"
#include "Tidewell/Services/PathURL.h"
#include "TidewellCore/Export/ExportPreferences.h"

namespace {

// Portals belong to desktops of these two; who draws elsewhere would not see their dialogs.
bool hasDesktop() {
  const QString platform = QGuiApplication::platformName();
  return platform == QStringLiteral("xcb") || platform.startsWith(QStringLiteral("wayland"));
}

}  // namespace

LorewickApp::LorewickApp(ExportViewModel::Setup setup)
    : windowFile_(preferencesFile(setup).replace_filename("window.json")),
      texts_(setup.texts),
      folders_({.work = work_, .texts = texts_, .home = setup.services.home, .asksDesktop = hasDesktop()}),
      controller_(completed(std::move(setup), folders_), work_),
      screens_(controller_, texts_),
      engine_({.screens = screens_, .folders = folders_, .appearance = appearance_, .texts = texts_}) {
  if (window() != nullptr) keeper_ = std::make_unique<WindowKeeper>(*window(), windowFile_);
}

// Where the controller keeps them.
std::filesystem::path LorewickApp::preferencesFile(const ExportViewModel::Setup& setup) {
  if (setup.preferencesURL) return *setup.preferencesURL;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  return ExportPreferences::fileURL(folder.isEmpty() ? setup.services.home / "Library" / "Application Support"
                                                     : localPath(folder));
}

ExportViewModel::Setup LorewickApp::completed(ExportViewModel::Setup setup, FolderPrompt& folders) {
  PlatformServices& services = setup.services;
  if (!services.chooseFolder) {
    services.chooseFolder = [&folders](const FolderRequest& request, FolderAnswer answer) {
      folders.ask(request, std::move(answer));
    };
  }
  const Workspace desktop = DesktopWorkspace::make();
  if (!services.workspace.openURL) services.workspace.openURL = desktop.openURL;
  if (!services.workspace.openFile) services.workspace.openFile = desktop.openFile;
  if (!services.workspace.revealInFinder) services.workspace.revealInFinder = desktop.revealInFinder;
  if (!services.presence.notify) services.presence = DesktopPresence::make();
  if (!services.now) services.now = [] { return Date(std::chrono::system_clock::now()); };
  return setup;
}
