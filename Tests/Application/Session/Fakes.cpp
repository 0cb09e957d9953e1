#include "Tests/Application/Session/Fakes.h"

#include <string_view>
#include <thread>
#include <utility>

#include "Tests/Application/Session/HeldLane.h"

namespace WizardTest {

namespace fs = std::filesystem;

constexpr std::string_view bookmarkPrefix = "bookmark of ";

PasswordStore FakePasswordStore::service() {
  return {.load = [this](const std::string& account, const PasswordAnswer& late) -> std::optional<SecretBytes> {
            note("load ", account);
            std::unique_lock guard(lock_);
            if (isLocked_) {
              waiting_.emplace_back(account, late);
              return std::nullopt;
            }
            released_.wait_for(guard, deadline, [this] { return !isHeld_; });
            return found(account);
          },
          .save =
              [this](const SecretBytes& password, const std::string& account) {
                note("save ", account);
                put(account, std::string(password.begin(), password.end()));
              },
          .remove =
              [this](const std::string& account) {
                note("remove ", account);
                const std::lock_guard guard(lock_);
                content_.erase(account);
              },
          .isAvailable = [this] { return isThere.load(); }};
}

void FakePasswordStore::note(const char* call, const std::string& account) {
  const std::lock_guard guard(lock_);
  calls_.push_back(call + account);
}

void FakePasswordStore::put(const std::string& account, const std::string& password) {
  const std::lock_guard guard(lock_);
  content_[account] = password;
}

std::map<std::string, std::string> FakePasswordStore::content() const {
  const std::lock_guard guard(lock_);
  return content_;
}

std::vector<std::string> FakePasswordStore::calls() const {
  const std::lock_guard guard(lock_);
  return calls_;
}

std::optional<SecretBytes> FakePasswordStore::found(const std::string& account) const {
  const auto entry = content_.find(account);
  if (entry == content_.end()) return std::nullopt;
  return SecretBytes(entry->second.begin(), entry->second.end());
}

void FakePasswordStore::lock() {
  const std::lock_guard guard(lock_);
  isLocked_ = true;
}

void FakePasswordStore::unlock() {
  std::vector<std::pair<std::string, PasswordAnswer>> waiting;
  {
    const std::lock_guard guard(lock_);
    isLocked_ = false;
    waiting.swap(waiting_);
  }
  // As a real store does: on a thread of its own.
  std::thread([&] {
    for (const auto& [account, answer] : waiting) answer(found(account));
  }).join();
}

void FakePasswordStore::hold() {
  const std::lock_guard guard(lock_);
  isHeld_ = true;
}

void FakePasswordStore::release() {
  const std::lock_guard guard(lock_);
  isHeld_ = false;
  released_.notify_all();
}

Bytes FakePermissions::bookmark(const fs::path& folder) {
  const std::string text = std::string(bookmarkPrefix) + folder.native();
  return {text.begin(), text.end()};
}

FolderPermissions FakePermissions::service() {
  return {.makeBookmark = [this](const fs::path& folder) -> std::optional<Bytes> {
            return makesBookmarks ? std::optional(bookmark(folder)) : std::nullopt;
          },
          .resolveBookmark = [this](const Bytes& bytes) -> std::optional<fs::path> {
            const std::string text(bytes.begin(), bytes.end());
            if (!text.starts_with(bookmarkPrefix)) return std::nullopt;
            const fs::path folder = text.substr(bookmarkPrefix.size());
            const auto found = moved.find(folder);
            return found == moved.end() ? folder : found->second;
          },
          .startAccess =
              [this](const fs::path& folder) {
                calls.push_back("start " + folder.native());
                if (!grantsAccess) return false;
                if (++running[folder] == 1 && hidden.contains(folder)) fs::rename(hidden.at(folder), folder);
                return true;
              },
          .stopAccess =
              [this](const fs::path& folder) {
                calls.push_back("stop " + folder.native());
                if (--running[folder] == 0 && hidden.contains(folder)) fs::rename(folder, hidden.at(folder));
              }};
}

void FakeChooser::answer(const std::optional<fs::path>& folder) {
  const FolderAnswer answer = std::move(answers_.front());
  answers_.erase(answers_.begin());
  answer(folder);
}

Workspace FakeWorkspace::service() {
  return {.openURL =
              [this](const std::string& url) {
                urls.push_back(url);
                return true;
              },
          .openFile =
              [this](const fs::path& file, const std::function<void()>& failed) {
                files.push_back(file);
                if (!opensFiles) failed();
              },
          .revealInFinder =
              [this](const fs::path& folder, const std::function<void()>& failed) {
                revealed.push_back(folder);
                if (!opensFiles) failed();
              }};
}

Presence FakePresence::service() {
  return {
      .keepAwake =
          [this](const std::string& reason) {
            reasons.push_back(reason);
            ++awakeCount;
            return std::shared_ptr<void>(nullptr, [this](void*) { --awakeCount; });
          },
      .isWindowInFront = [this] { return isInFront; },
      .notify = [this](const std::string& title, const std::string& text) { notices.push_back(title + ": " + text); }};
}

}  // namespace WizardTest
