#pragma once

#include <QtGlobal>
#include <cstdlib>
#include <fstream>
#include <string>

#include "Tests/Support/TemporaryDirectory.h"

// Made before the QGuiApplication: a window is drawn into memory unless the
// environment names another platform, and has all that a desktop gives to one: a large
// screen, or that of TIDEWELL_TEST_SCREEN ("\"width\": 1366, \"height\": 768").
class MemoryPlatform {
 public:
  MemoryPlatform() {
    describeScreen();
    setUnlessGiven("QT_QPA_PLATFORM", ("offscreen:configfile=" + (runtime_ / "screens.json").string()).c_str());
    setUnlessGiven("QT_QUICK_BACKEND", "software");
    setUnlessGiven("XDG_RUNTIME_DIR", runtime_.path().c_str());
  }

 private:
  // Qt's own is smaller than the window.
  void describeScreen() const {
    const char* given = std::getenv("TIDEWELL_TEST_SCREEN");
    const std::string size = given == nullptr ? R"("width": 1920, "height": 1080)" : given;
    std::ofstream(runtime_ / "screens.json") << R"({"screens": [{"name": "one", "x": 0, "y": 0, )" << size
                                             << R"(, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
  }
  static void setUnlessGiven(const char* name, const char* value) {
    if (qEnvironmentVariableIsEmpty(name)) qputenv(name, value);
  }

  Fixture::TemporaryDirectory runtime_;
};
