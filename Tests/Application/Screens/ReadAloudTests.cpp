#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "Tests/Application/Gallery/ScreenStates.h"
#include "Tests/Application/Screens/ScreenReader.h"
#include "Tests/Application/Screens/WindowScene.h"
#include "Tidewell/Screens/Backdrop.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using WindowTest::Scene;
using WindowTest::ScreenReader;
using WindowTest::Spoken;
using WindowTest::Wishes;

ExportState stateNamed(const std::string& name) {
  for (const ScreenState& each : allScreenStates()) {
    if (each.name == name) return each.state;
  }
  throw std::runtime_error("There is no state " + name + ".");
}

// What really arrives at a screen reader, over a real accessibility bus.
class ReadAloud : public Scene {
 protected:
  void open(const Wishes& wishes = {}) {
    Scene::open(wishes);
    ASSERT_TRUE(until([&] { return reader.hasWindow(); }, "the window is on the bus"));
  }

  // From here on the window shows what the test says. It no longer follows the wizard: a moment of the wizard's own
  // state in between, as when the space on the disk is found out, would take the pages away and tell notices again.
  void show(const ExportState& state) {
    QObject::disconnect(&controller(), &ExportViewModel::changed, &app->screens(), nullptr);
    app->screens().show(state, screenStatesNow());
  }
  void show(ExportProgress::Phase phase, std::int64_t completed, std::int64_t total) {
    ExportState state = stateNamed("exporting-copying");
    state.progress = ExportProgress{.phase = phase, .completed = completed, .total = total};
    show(state);
  }

  // What is read once there is such a part: the bus takes its time.
  Spoken readWith(const QString& role, const QString& name = {}) {
    Spoken window;
    until(
        [&] {
          window = reader.read();
          return window.find(role, name) != nullptr;
        },
        "a " + role.toStdString() + " is read");
    return window;
  }

  void expectDescribed(const QString& button, const char* description) {
    const Spoken window = readWith("push button", button);
    const Spoken* found = window.find("push button", button);
    ASSERT_NE(found, nullptr) << button.toStdString();
    EXPECT_EQ(found->description.toStdString(), description);
  }

  static Wishes encrypted() { return {.contents = ExportTest::smallBackup(true)}; }

  ScreenReader reader;
};

TEST_F(ReadAloud, AProgressBarTellsHowFarItIs) {
  open();
  show(ExportProgress::Phase::copyingMedia, 85, 340);
  const Spoken window = readWith("progress bar");
  const Spoken* bar = window.find("progress bar");
  ASSERT_NE(bar, nullptr);
  EXPECT_EQ(bar->name, "Copying media");
  ASSERT_TRUE(bar->value);
  EXPECT_EQ(bar->value->current, 0.25);
  EXPECT_EQ(bar->value->minimum, 0);
  EXPECT_EQ(bar->value->maximum, 1);
  const int changes = reader.changedValues;
  show(ExportProgress::Phase::copyingMedia, 86, 340);
  EXPECT_TRUE(until([&] { return reader.changedValues > changes; }, "the change is told"));
}

TEST_F(ReadAloud, EachQuarterOfAPhaseIsAnnouncedOnce) {
  using enum ExportProgress::Phase;
  open();
  show(readingChats, 1, 1);
  qsizetype heard = 0;
  const auto expectAfter = [&](ExportProgress::Phase phase, std::int64_t completed, const char* announced) {
    show(phase, completed, 100);
    if (announced == nullptr) return;
    ++heard;
    until([&] { return reader.notices.size() >= heard; }, announced);
    EXPECT_EQ(reader.notices.value(heard - 1).toStdString(), announced);
  };
  expectAfter(copyingMedia, 24, nullptr);
  expectAfter(copyingMedia, 25, "Copying media, 25%");
  for (const int quiet : {26, 40, 49}) expectAfter(copyingMedia, quiet, nullptr);
  expectAfter(copyingMedia, 50, "Copying media, 50%");
  expectAfter(copyingMedia, 80, "Copying media, 75%");
  expectAfter(copyingMedia, 99, nullptr);
  expectAfter(copyingMedia, 100, "Copying media, 100%");
  expectAfter(writingTranscripts, 0, nullptr);
  expectAfter(writingTranscripts, 30, "Writing transcripts, 25%");
  QTest::qWait(100);
  EXPECT_EQ(reader.notices.size(), heard) << reader.notices.join(u'|').toStdString();
}

TEST_F(ReadAloud, ADisabledButtonSaysWhy) {
  open();
  show(stateNamed("backup-list"));
  expectDescribed("Continue", "Choose a backup first");
  show(stateNamed("backup-encrypted"));
  expectDescribed("Continue", "Enter the backup password first");
  show(stateNamed("backup-inspecting"));
  expectDescribed("Continue", "Reading this backup…");
  show(stateNamed("backup-chosen"));
  expectDescribed("Continue", "");
  show(stateNamed("options-no-destination"));
  expectDescribed("Start Export", "Choose where to save first");
  show(stateNamed("options-ready"));
  expectDescribed("Start Export", "");
}

TEST_F(ReadAloud, APasswordFieldHasANameAndKeepsItsSecret) {
  open(encrypted());
  click("backupRow0");
  click("passwordField");
  EXPECT_NE(readWith("password text", "Backup password").find("password text", "Backup password"), nullptr)
      << "before typing";
  type("zebra");
  const Spoken window = readWith("password text", "Backup password");
  const Spoken* field = window.find("password text", "Backup password");
  ASSERT_NE(field, nullptr) << window.everything().toStdString();
  EXPECT_EQ(field->text, "•••••");
  EXPECT_NE(field->find("push button", "Show the password while pressed"), nullptr);
  EXPECT_EQ(state().currentPassword(), "zebra");

  const QQuickItem& eye = item("passwordField.eye");
  const QPoint middleOfEye = eye.mapToScene(QPointF(eye.width() / 2, eye.height() / 2)).toPoint();
  QTest::mousePress(&Scene::window(), Qt::LeftButton, Qt::NoModifier, middleOfEye);
  const Spoken shown = reader.read();
  QTest::mouseRelease(&Scene::window(), Qt::LeftButton, Qt::NoModifier, middleOfEye);
  EXPECT_NE(shown.find("password text", "Backup password"), nullptr) << "while it is shown to the eye";
  press(Qt::Key_Backspace);
  type("b");
  reader.read();
  for (const QString& all : {window.everything(), shown.everything(), reader.heard}) {
    for (const char* secret : {"zebra", "zebr", "zeb", "ebra", "bra"}) {
      EXPECT_THAT(all.toStdString(), Not(HasSubstr(secret)));
    }
  }
  EXPECT_THAT(reader.heard.toStdString(), Not(HasSubstr(" z\n")));
}

TEST_F(ReadAloud, ARowIsReadAsAWhole) {
  open();
  ExportState state = stateNamed("options-ready");
  state.scanResult->statsByKind = {{MediaKind::photos, {.count = 12'345, .byteCount = 127'000}},
                                   {MediaKind::videos, {.count = 1, .byteCount = 1'000}}};
  show(state);
  const Spoken window = readWith("check box", "Photos, 12,345 files, 127.0 kB");
  for (const char* name : {"Photos, 12,345 files, 127.0 kB", "Videos, 1 file, 1.0 kB", "Stickers, 0 files, 0 bytes"}) {
    EXPECT_NE(window.find("check box", name), nullptr) << name;
  }
}

// The console is silent all the while.
TEST_F(ReadAloud, AWholeExportCanBeListenedTo) {
  open();
  click("backupRow0");
  reader.read();
  continueWithBackup();
  chooseDestination();
  EXPECT_THAT(readWith("push button", "Start Export").everything().toStdString(), HasSubstr("label: Media: "));
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
  EXPECT_NE(readWith("push button", "Open Chat Archive").find("push button", "Open Chat Archive"), nullptr);
}

TEST_F(ReadAloud, NothingBehindADialogCanBeReached) {
  open();
  const auto* backdrop = window().findChild<Backdrop*>();
  ASSERT_NE(backdrop, nullptr);
  ExportState stopping = stateNamed("exporting-copying");
  stopping.stopQuestion = StopQuestion::cancel;
  ExportState unopened = stateNamed("done");
  unopened.unopenedPath = "/kept/index.html";
  const std::vector<std::tuple<ExportState, ExportState, QString, QString>> cases{
      {stateNamed("backup-encrypted"), stateNamed("error"), "Continue", "OK"},
      {stateNamed("backup-stored-password"), stateNamed("unlock"), "Continue", "Cancel"},
      {stateNamed("exporting-copying"), stopping, "Cancel", "Keep exporting"},
      {stateNamed("done"), unopened, "Show in Finder", "Close"}};
  for (const auto& [before, during, behind, answer] : cases) {
    show(before);
    const Spoken uncovered = readWith("push button", behind);
    EXPECT_NE(uncovered.find("push button", behind), nullptr) << behind.toStdString();
    EXPECT_THAT(uncovered.everything().toStdString(), HasSubstr("heading: Export chats"));
    show(during);
    const Spoken covered = readWith("push button", answer);
    EXPECT_NE(covered.find("push button", answer), nullptr) << answer.toStdString();
    EXPECT_THAT(covered.everything().toStdString(), Not(HasSubstr("heading: Export chats")));
    if (behind != answer && answer != "Cancel") {
      EXPECT_THAT(covered.everything().toStdString(), Not(HasSubstr("push button: " + behind.toStdString() + "\n")));
    }
    for (int i = 0; i < 12; ++i) {
      press(Qt::Key_Tab);
      EXPECT_FALSE(backdrop->isAncestorOf(window().activeFocusItem())) << focused();
    }
    show(before);
    EXPECT_NE(readWith("push button", behind).find("push button", behind), nullptr)
        << behind.toStdString() << " comes back";
  }
}

}  // namespace
