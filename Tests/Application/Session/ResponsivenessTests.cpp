#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>

#include "Tests/Application/Session/ManyMessages.h"
#include "Tests/Application/Session/Pulse.h"
#include "Tests/Application/Session/WizardScene.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
class ResponsivenessTest : public testing::Test {
 protected:
  Milliseconds longestGap(const std::function<void()>& begin, const std::function<bool()>& hasEnded) {
    Pulse pulse;
    begin();
    EXPECT_TRUE(scene.until(hasEnded));
    const Milliseconds longest = pulse.longest();
    EXPECT_GT(pulse.count(), 10) << "too quick to be measured";
    return longest;
  }

  Milliseconds whileScanning() {
    return longestGap([this] { wizard.continueToOptions(); }, [this] { return !state.isScanning(); });
  }
  Milliseconds whileExporting() {
    return longestGap([this] { wizard.startExport(); }, [this] { return !state.isExporting(); });
  }

  WizardScene scene{WizardScene::Watch::nothing};
  ExportViewModel& wizard = scene.wizard();
  const ExportState& state = scene.state();
};

TEST_F(ResponsivenessTest, StaysAtHandWithAHundredThousandMessages) {
  const fs::path backup = scene.addBackup("device", manyMessages(100'000, 0));
  Milliseconds scanning = Milliseconds::max();
  Milliseconds exporting = Milliseconds::max();
  for (int attempt = 0; attempt < attempts && std::max(scanning, exporting) > longestStandstill; ++attempt) {
    fs::remove_all(scene.desktop);
    fs::create_directories(scene.desktop);
    ASSERT_TRUE(scene.choose(backup));
    scanning = std::min(scanning, whileScanning());
    ASSERT_EQ(state.step, WizardStep::options);
    ASSERT_TRUE(scene.until([&] { return state.canExport(); }));
    exporting = std::min(exporting, whileExporting());
    ASSERT_EQ(state.step, WizardStep::done) << state.errorMessage.value_or("no message");
    ASSERT_GT(state.summary->transcriptCount, 1'000);
    wizard.exportAnother();
  }
  std::printf("longest gap: %.1f ms while scanning, %.1f ms while exporting\n", scanning.count(), exporting.count());
  EXPECT_LE(scanning, longestStandstill);
  EXPECT_LE(exporting, longestStandstill);
}

}  // namespace
}  // namespace WizardTest
