#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/Crypto/SecretBytes.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/DateText.h"

// What the folder chooser shows.
struct FolderRequest {
  std::string title;
  std::string message;
  std::string confirmButton;
  std::filesystem::path initialFolder;
  bool canCreateFolders = false;

  bool operator==(const FolderRequest&) const = default;
};

// Receives the chosen folder, or nothing when the user cancelled.
using FolderAnswer = std::function<void(std::optional<std::filesystem::path>)>;

// Receives what a store has of a password; absent when it has none.
using PasswordAnswer = std::function<void(std::optional<SecretBytes>)>;

// Where backup passwords are kept. Called on a worker thread, one call at a
// time; nothing here fails: without a store nothing is found and nothing kept.
struct PasswordStore {
  // Waits a few seconds. A store that is locked takes as long as its user does to unlock it: what it answers after
  // that goes to `late`, once, on a thread of its own.
  std::function<std::optional<SecretBytes>(const std::string& account, const PasswordAnswer& late)> load;
  std::function<void(const SecretBytes& password, const std::string& account)> save;
  std::function<void(const std::string& account)> remove;
  // Whether there is a store at all, be it locked.
  std::function<bool()> isAvailable;

  // The user's own: Keychain, or the Secret Service.
  static PasswordStore system();
  // Keeps nothing.
  static PasswordStore none();
};

// What a system asks for before it lets an application back into a folder that
// the user once chose.
struct FolderPermissions {
  std::function<std::optional<Bytes>(const std::filesystem::path& folder)> makeBookmark;
  std::function<std::optional<std::filesystem::path>(const Bytes& bookmark)> resolveBookmark;
  std::function<bool(const std::filesystem::path& folder)> startAccess;
  std::function<void(const std::filesystem::path& folder)> stopAccess;  // once for each start that said true

  // Of a system that asks for nothing: no bookmarks, and access is never started.
  static FolderPermissions none();
};

// The desktop that the application runs on. What it cannot open is told through
// `failed`, on the interface thread, maybe later.
struct Workspace {
  using Open = std::function<void(const std::filesystem::path& place, std::function<void()> failed)>;

  std::function<bool(const std::string& url)> openURL;  // false when nothing could open it
  Open openFile;                                        // with its default application
  Open revealInFinder;                                  // a folder, selected in the file manager
};

// What the desktop does for work that goes on while nobody looks.
struct Presence {
  // Keeps the machine from falling asleep until what it returns is gone.
  std::function<std::shared_ptr<void>(const std::string& reason)> keepAwake;
  std::function<bool()> isWindowInFront;
  std::function<void(const std::string& title, const std::string& text)> notify;
};

// Everything that the wizard needs from outside. All but `passwords` is called on the interface thread.
struct PlatformServices {
  // Answers once, also later, on the interface thread.
  std::function<void(const FolderRequest& request, FolderAnswer answer)> chooseFolder;
  Workspace workspace;
  PasswordStore passwords = PasswordStore::system();
  FolderPermissions permissions = FolderPermissions::none();
  Presence presence;
  std::function<Date()> now;
  std::filesystem::path backupRoot = DefaultPaths::mobileSyncBackup();
  std::filesystem::path home = DefaultPaths::home();
};
