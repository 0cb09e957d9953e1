#pragma once

#include <string>
#include <vector>

#include "Tidewell/Session/ExportState.h"

// The states that the window must look well in, each with a name for its picture.
struct ScreenState {
  std::string name;
  ExportState state;
};

std::vector<ScreenState> allScreenStates();

// What the clock says in them.
Date screenStatesNow();
