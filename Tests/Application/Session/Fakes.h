#pragma once

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tidewell/Services/PlatformServices.h"

// What the wizard needs from outside, played by the test. Must outlive the wizard's work.
namespace WizardTest {

class FakePasswordStore {
 public:
  PasswordStore service();

  void put(const std::string& account, const std::string& password);
  std::map<std::string, std::string> content() const;
  // "load A", "save A", "remove A", in the order of the calls.
  std::vector<std::string> calls() const;
  // From now on reading waits until it is released.
  void hold();
  void release();
  // From now on reading finds nothing, until somebody unlocks the store: then what was asked for comes late.
  void lock();
  void unlock();

  std::atomic<bool> isThere = true;

 private:
  std::optional<SecretBytes> found(const std::string& account) const;
  void note(const char* call, const std::string& account);

  mutable std::mutex lock_;
  std::condition_variable released_;
  bool isHeld_ = false;
  bool isLocked_ = false;
  std::vector<std::pair<std::string, PasswordAnswer>> waiting_;
  std::map<std::string, std::string> content_;
  std::vector<std::string> calls_;
};

// A bookmark is the folder's path after "bookmark of ".
class FakePermissions {
 public:
  FolderPermissions service();

  static Bytes bookmark(const std::filesystem::path& folder);

  bool makesBookmarks = true;
  bool grantsAccess = true;
  // Where bookmarked folders stand today; those not named here have not moved.
  std::map<std::filesystem::path, std::filesystem::path> moved;
  // What the system lets this program see only while access runs: hidden elsewhere meanwhile.
  std::map<std::filesystem::path, std::filesystem::path> hidden;
  // "start /a", "stop /a", in their order.
  std::vector<std::string> calls;
  // How often access to a folder runs at present.
  std::map<std::filesystem::path, int> running;
};

class FakeChooser {
 public:
  auto service() {
    return [this](const FolderRequest& request, FolderAnswer answer) {
      requests.push_back(request);
      answers_.push_back(std::move(answer));
    };
  }
  // Answers the oldest open question.
  void answer(const std::optional<std::filesystem::path>& folder);

  std::vector<FolderRequest> requests;

 private:
  std::vector<FolderAnswer> answers_;
};

class FakeWorkspace {
 public:
  Workspace service();

  std::vector<std::string> urls;
  std::vector<std::filesystem::path> files;
  std::vector<std::filesystem::path> revealed;
  bool opensFiles = true;
};

class FakePresence {
 public:
  Presence service();

  bool isInFront = false;
  std::vector<std::string> reasons;
  int awakeCount = 0;  // how many times the machine is kept awake at present
  std::vector<std::string> notices;
};

}  // namespace WizardTest
