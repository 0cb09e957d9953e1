#pragma once

#include <QtGlobal>

#include "Tests/Support/TemporaryDirectory.h"

// Made before the QGuiApplication: a window is drawn into memory unless the
// environment names another platform, and has all that a desktop gives to one.
class MemoryPlatform {
 public:
  MemoryPlatform() {
    setUnlessGiven("QT_QPA_PLATFORM", "offscreen");
    setUnlessGiven("QT_QUICK_BACKEND", "software");
    setUnlessGiven("XDG_RUNTIME_DIR", runtime_.path().c_str());
  }

 private:
  static void setUnlessGiven(const char* name, const char* value) {
    if (qEnvironmentVariableIsEmpty(name)) qputenv(name, value);
  }

  Fixture::TemporaryDirectory runtime_;
};
