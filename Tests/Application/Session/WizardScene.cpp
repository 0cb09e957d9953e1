#include "Tests/Application/Session/WizardScene.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <set>
#include <utility>

#include "Tests/Export/ExportScene.h"

namespace WizardTest {

namespace fs = std::filesystem;

namespace {

bool mayFollow(WizardStep before, WizardStep after) {
  using enum WizardStep;
  static const std::set<std::pair<WizardStep, WizardStep>> transitions{
      {backup, options},    {options, backup}, {options, exporting}, {exporting, done},
      {exporting, options}, {done, backup},    {done, exporting}};
  return transitions.contains({before, after});
}

}  // namespace

Fixture::BackupContents small(bool isEncrypted, const std::string& identifier) {
  Fixture::BackupContents contents = ExportTest::smallBackup(isEncrypted);
  contents.uniqueIdentifier = identifier;
  return contents;
}

WizardScene::WizardScene(Watch watch) : watch_(watch) {
  fs::create_directories(root);
  fs::create_directories(desktop);
  launch();
}

WizardScene::~WizardScene() {
  passwords.release();
  quit();
}

void WizardScene::quit() {
  if (wizard_) checkNothingIsUntold();
  wizard_.reset();
}

void WizardScene::launch() {
  quit();
  PlatformServices services{.chooseFolder = chooser.service(),
                            .workspace = workspace.service(),
                            .passwords = passwords.service(),
                            .permissions = permissions.service(),
                            .presence = presence.service(),
                            .now = [this] { return now; },
                            .backupRoot = root,
                            .home = home};
  wizard_ = std::make_unique<ExportViewModel>(
      ExportViewModel::Setup{.services = std::move(services),
                             .texts = L10n(table, {.identifier = "en_US"}, {.identifier = "UTC"}),
                             .preferencesURL = preferencesURL},
      work);
  told_ = {};
  steps_ = {WizardStep::backup};
  changeCount_ = 0;
  if (watch_ == Watch::nothing) return;
  QObject::connect(
      wizard_.get(), &ExportViewModel::changed, wizard_.get(), [this] { takeNotice(); }, Qt::DirectConnection);
}

void WizardScene::takeNotice() {
  EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
  EXPECT_FALSE(told_ == state()) << "a change was told, but nothing has changed";
  if (told_.step != state().step) {
    EXPECT_TRUE(mayFollow(told_.step, state().step))
        << static_cast<int>(told_.step) << " to " << static_cast<int>(state().step);
    steps_.push_back(state().step);
  }
  told_ = state();
  ++changeCount_;
}

void WizardScene::checkNothingIsUntold() {
  EXPECT_TRUE(watch_ == Watch::nothing || told_ == state()) << "a change was not told";
}

fs::path WizardScene::addBackup(const fs::path& place, const Fixture::BackupContents& contents) const {
  return Fixture::writeBackup(contents, root / place).folder;
}

testing::AssertionResult WizardScene::until(const std::function<bool()>& condition, const char* what) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  // What other threads do wakes nobody here.
  QTimer heartbeat;
  heartbeat.start(2);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return testing::AssertionFailure() << what << " never came";
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (wizard_) checkNothingIsUntold();
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult WizardScene::untilIdle() {
  // Work may ask for work in another lane: two rounds through each of them bring every chain to its end.
  for (int round = 0; round < 3; ++round) {
    for (const auto lane :
         {BackgroundWork::Lane::inOrder, BackgroundWork::Lane::utility, BackgroundWork::Lane::userInitiated}) {
      QObject context;
      std::atomic<int> ended = 0;
      const int threads = lane == BackgroundWork::Lane::userInitiated ? BackgroundWork::userInitiatedThreads : 1;
      const auto begun = std::make_shared<std::atomic<int>>(0);
      for (int i = 0; i < threads; ++i) {
        // All at the same time: then no thread of the lane does anything else.
        work.run(
            lane, &context,
            [begun, threads] {
              const auto end = std::chrono::steady_clock::now() + deadline;
              for (++*begun; *begun < threads && std::chrono::steady_clock::now() < end;) std::this_thread::yield();
            },
            [&ended](const std::future<void>&) { ++ended; });
      }
      if (const auto result = until([&] { return ended == threads; }, "the end of all work"); !result) return result;
    }
  }
  return testing::AssertionSuccess();
}

void WizardScene::takeUpEvents() {
  QCoreApplication::processEvents();
  if (wizard_) checkNothingIsUntold();
}

testing::AssertionResult WizardScene::choose(const fs::path& backup) {
  wizard().setBackup(backup);
  return until([this] { return !state().isInspecting(); }, "the end of the inspection");
}

testing::AssertionResult WizardScene::reachOptions(const fs::path& backup) {
  if (const auto result = choose(backup); !result) return result;
  if (state().backupInfo && state().backupInfo->isEncrypted && !state().currentPassword()) {
    wizard().setBackupPassword(QString::fromStdString(password));
  }
  wizard().continueToOptions();
  if (const auto result = until([this] { return !state().isScanning(); }, "the end of the scan"); !result)
    return result;
  if (state().step != WizardStep::options) {
    return testing::AssertionFailure() << "not on the options step: " << state().errorMessage.value_or("no message");
  }
  return untilIdle();
}

testing::AssertionResult WizardScene::reachDone(const fs::path& backup) {
  if (const auto result = reachOptions(backup); !result) return result;
  wizard().startExport();
  if (const auto result = until([this] { return !state().isExporting(); }, "the end of the export"); !result) {
    return result;
  }
  if (state().step == WizardStep::done) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "the export failed: " << state().errorMessage.value_or("no message");
}

}  // namespace WizardTest
