#pragma once

#include <string>
#include <vector>

#include "Tidewell/Session/ExportState.h"
#include "Tidewell/Session/FolderBrowser.h"

// The states that the window must look well in, each with a name for its picture.
struct ScreenState {
  std::string name;
  ExportState state;
};

std::vector<ScreenState> allScreenStates();

// The states of our own folder chooser.
struct ChooserState {
  std::string name;
  FolderBrowserState state;
  bool isNaming = false;  // a new folder
};

std::vector<ChooserState> allChooserStates();

// What the clock says in them.
Date screenStatesNow();
