#include "Tidewell/Screens/LorewickApp.h"

#include <chrono>

#include "Tidewell/Screens/DesktopPresence.h"
#include "Tidewell/Screens/DesktopWorkspace.h"

LorewickApp::LorewickApp(ExportViewModel::Setup setup)
    : texts_(setup.texts),
      controller_(completed(std::move(setup), folders_), work_),
      screens_(controller_, texts_),
      engine_({.screens = screens_, .folders = folders_, .appearance = appearance_, .texts = texts_}) {}

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
