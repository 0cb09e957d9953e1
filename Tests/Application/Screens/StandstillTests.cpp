#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "Tests/Application/Screens/WindowScene.h"
#include "Tests/Application/Session/ManyMessages.h"
#include "Tests/Application/Session/Pulse.h"

namespace {

using WindowTest::Scene;
using WizardTest::Milliseconds;
using WizardTest::Pulse;
namespace fs = std::filesystem;

// The window itself, its screens included, with a backup that takes its time.
class Standstill : public Scene {
 protected:
  Milliseconds longestUntil(WizardStep step, const std::string& button) {
    Pulse pulse;
    click(button);
    eventually([&] { return state().step == step; }, "the next step");
    return pulse.longest();
  }
};

TEST_F(Standstill, IsNotNoticedWithAHundredThousandMessages) {
  open({.contents = WizardTest::manyMessages(100'000, 0)});
  Milliseconds scanning = Milliseconds::max();
  Milliseconds exporting = Milliseconds::max();
  for (int attempt = 0; attempt < WizardTest::attempts; ++attempt) {
    if (std::max(scanning, exporting) <= WizardTest::longestStandstill) break;
    fs::remove_all(destination);
    fs::create_directories(destination);
    click("backupRow0");
    scanning = std::min(scanning, longestUntil(WizardStep::options, "continueButton"));
    chooseDestination();
    exporting = std::min(exporting, longestUntil(WizardStep::done, "startExportButton"));
    click("exportAnotherButton");
  }
  std::printf("longest gap: %.1f ms while scanning, %.1f ms while exporting\n", scanning.count(), exporting.count());
  EXPECT_LE(scanning, WizardTest::longestStandstill);
  EXPECT_LE(exporting, WizardTest::longestStandstill);
}

}  // namespace
