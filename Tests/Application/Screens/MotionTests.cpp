#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QGuiApplication>
#include <QStyleHints>
#include <QTest>
#include <atomic>
#include <cstdio>

#include "Tests/Application/Gallery/ScreenStates.h"
#include "Tests/Application/Screens/WindowScene.h"

namespace {

using WindowTest::Scene;

double processorSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// What waiting costs, in frames that are drawn.
class Motion : public Scene {
 protected:
  static constexpr int span = 2000;  // milliseconds

  void SetUp() override {
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    open();
    // Whatever the controller does later would show its own state again.
    ASSERT_TRUE(until([&] { return state().availableBytes.has_value(); }, "the free space is known"));
  }

  void show(const std::string& name) {
    app->screens().show({}, screenStatesNow());
    for (const ScreenState& each : allScreenStates()) {
      if (each.name == name) return app->screens().show(each.state, screenStatesNow());
    }
    FAIL() << "There is no state " << name << ".";
  }

  // Drawn within the span, after what moves when a state begins.
  int framesOf(const std::string& name) {
    show(name);
    QTest::qWait(600);
    std::atomic<int> frames = 0;
    const auto drawn = QObject::connect(
        &window(), &QQuickWindow::frameSwapped, &window(), [&] { ++frames; }, Qt::DirectConnection);
    const double before = processorSeconds();
    QTest::qWait(span);
    std::printf("%s: %d frames, %.0f ms of the processor in %d ms\n", name.c_str(), frames.load(),
                (processorSeconds() - before) * 1000, span);
    QObject::disconnect(drawn);
    return frames;
  }
};

TEST_F(Motion, IsSlowWhileSomethingIsComputed) {
  for (const char* name : {"backup-looking", "backup-inspecting", "unlock", "unlock-stopping", "exporting-preparing",
                           "exporting-reading"}) {
    const int frames = framesOf(name);
    EXPECT_LE(frames, 15 * span / 1000 + 2) << name;
    EXPECT_GE(frames, 5 * span / 1000) << name << " does not show that it goes on";
  }
}

TEST_F(Motion, EndsWhenNothingIsComputed) {
  for (const char* name : {"backup-none", "backup-chosen", "options-ready", "exporting-copying", "done", "error"}) {
    EXPECT_EQ(framesOf(name), 0) << name;
  }
}

TEST_F(Motion, IsNotSeenUnderAShade) {
  show("unlock");
  ASSERT_TRUE(until([&] { return isShown("unlockSheet") || isShown("cancelUnlockButton"); }, "the sheet"));
  const double before = item("busySpinner").rotation();
  QTest::qWait(400);
  EXPECT_EQ(item("busySpinner").rotation(), before);
  show("backup-inspecting");
  EXPECT_TRUE(until([&] { return item("busySpinner").rotation() != before; }, "it turns again"));
}

TEST_F(Motion, IsSparedThoseWhoWantNone) {
  app->appearance().setReducesMotion(true);
  EXPECT_EQ(framesOf("unlock"), 0);
  EXPECT_EQ(framesOf("backup-looking"), 0);
}

}  // namespace
