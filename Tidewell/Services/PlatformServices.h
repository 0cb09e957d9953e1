#pragma once

#include <filesystem>
#include <functional>
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

// Where backup passwords are kept. Called on a worker thread, one call at a
// time; nothing here fails: without a store nothing is found and nothing kept.
struct PasswordStore {
  std::function<std::optional<SecretBytes>(const std::string& account)> load;
  std::function<void(const SecretBytes& password, const std::string& account)> save;
  std::function<void(const std::string& account)> remove;

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

// The desktop that the application runs on. Failures are silent.
struct Workspace {
  std::function<bool(const std::string& url)> openURL;                      // false when nothing could open it
  std::function<void(const std::filesystem::path& file)> openFile;          // with its default application
  std::function<void(const std::filesystem::path& folder)> revealInFinder;  // selected in the file manager
};

// Everything that the wizard needs from outside. All but `passwords` is called on the interface thread.
struct PlatformServices {
  // Answers once, also later, on the interface thread.
  std::function<void(const FolderRequest& request, FolderAnswer answer)> chooseFolder;
  Workspace workspace;
  PasswordStore passwords = PasswordStore::system();
  FolderPermissions permissions = FolderPermissions::none();
  std::function<Date()> now;
  std::filesystem::path backupRoot = DefaultPaths::mobileSyncBackup();
  std::filesystem::path home = DefaultPaths::home();
};
