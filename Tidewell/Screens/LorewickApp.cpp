#include "Tidewell/Screens/LorewickApp.h"

#include <QGuiApplication>
#include <chrono>

#include "Tidewell/Screens/DesktopPresence.h"
#include "Tidewell/Screens/DesktopWorkspace.h"

namespace {

// Portals belong to desktops of these two; who draws elsewhere would not see their dialogs.
bool hasDesktop() {
  const QString platform = QGuiApplication::platformName();
  return platform == QStringLiteral("xcb") || platform.startsWith(QStringLiteral("wayland"));
}

}  // namespace

LorewickApp::LorewickApp(ExportViewModel::Setup setup)
    : texts_(setup.texts),
      folders_({.work = work_, .texts = texts_, .home = setup.services.home, .asksDesktop = hasDesktop()}),
      controller_(completed(std::move(setup), folders_), work_),
      screens_(controller_, texts_),
      engine_({.screens = screens_, .folders = folders_, .appearance = appearance_, .texts = texts_}) {
  if (window() == nullptr) return;
  const std::filesystem::path besidePreferences = controller_.preferencesURL().parent_path() / "window.json";
  keeper_ = std::make_unique<WindowKeeper>(*window(), besidePreferences);
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
  const Presence presence = DesktopPresence::make();
  if (!services.presence.keepAwake) services.presence.keepAwake = presence.keepAwake;
  if (!services.presence.isWindowInFront) services.presence.isWindowInFront = presence.isWindowInFront;
  if (!services.presence.notify) services.presence.notify = presence.notify;
  if (!services.now) services.now = [] { return Date(std::chrono::system_clock::now()); };
  return setup;
}
