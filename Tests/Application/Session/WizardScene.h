#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Tests/Application/Session/Fakes.h"
#include "Tests/Application/Session/HeldLane.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tidewell/Session/ExportViewModel.h"

// The wizard's controller with a folder of backups, a home folder and a desktop of
// its own. While it lives it is watched: every change is told, on the interface
// thread and only when something changed, and steps follow each other as they may.
namespace WizardTest {

inline const std::string password = "correct horse";

// The backup of Tests/Export/ExportScene.h with another identifier, so that its password has an account of its own.
Fixture::BackupContents small(bool isEncrypted = false, const std::string& identifier = "device");

class WizardScene {
 public:
  enum class Watch { everything, nothing };

  explicit WizardScene(Watch watch = Watch::everything);
  ~WizardScene();
  WizardScene(const WizardScene&) = delete;
  WizardScene& operator=(const WizardScene&) = delete;

  // A backup by its name in the folder that the library lists, or by its path anywhere else.
  std::filesystem::path addBackup(const std::filesystem::path& place,
                                  const Fixture::BackupContents& contents = small()) const;

  ExportViewModel& wizard() { return *wizard_; }
  const ExportState& state() const { return wizard_->state(); }
  // Ends the controller, whatever it is doing, and, with `launch`, makes a new one, as the application does.
  void quit();
  void launch();

  // Takes up events until `condition` holds; fails at the deadline.
  testing::AssertionResult until(const std::function<bool()>& condition, const char* what = "the condition");
  // Nothing runs any more, on any thread, and no result is on its way.
  testing::AssertionResult untilIdle();
  // Takes up the events that are there.
  void takeUpEvents();

  testing::AssertionResult choose(const std::filesystem::path& backup);
  // Chooses the backup, gives the password if it needs one, and reads its chats.
  testing::AssertionResult reachOptions(const std::filesystem::path& backup);
  // And has it exported, into `home`/Desktop unless a destination was set.
  testing::AssertionResult reachDone(const std::filesystem::path& backup);

  const std::vector<WizardStep>& steps() const { return steps_; }
  int changeCount() const { return changeCount_; }

  Fixture::TemporaryDirectory folder;
  std::filesystem::path root = folder / "Backup";
  std::filesystem::path home = folder / "home";
  std::filesystem::path desktop = home / "Desktop";
  std::filesystem::path preferencesURL = folder / "support" / "Lorewick" / "preferences.json";
  FakePasswordStore passwords;
  FakePermissions permissions;
  FakeChooser chooser;
  FakeWorkspace workspace;
  FakePresence presence;
  Date now = dateFromUnixTime(1'700'000'000);
  StringTable table;
  BackgroundWork work;

 private:
  void takeNotice();
  void checkNothingIsUntold();

  Watch watch_;
  std::unique_ptr<ExportViewModel> wizard_;
  ExportState told_;
  std::vector<WizardStep> steps_;
  int changeCount_ = 0;
};

}  // namespace WizardTest
