#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Every failure that the core reports by itself. What the file system or a
// property list reports is passed on unchanged, as std::filesystem::filesystem_error
// and PropertyListError. Texts are for people, in English.
class TidewellError : public std::exception {
 public:
  struct BackupNotFound {
    std::string path;
    bool operator==(const BackupNotFound&) const = default;
  };
  struct NotABackup {
    std::string detail;
    bool operator==(const NotABackup&) const = default;
  };
  struct MultipleDeviceBackups {
    std::vector<std::string> folderNames;
    bool operator==(const MultipleDeviceBackups&) const = default;
  };
  struct ManifestDecryptFailed {
    std::string detail;
    bool operator==(const ManifestDecryptFailed&) const = default;
  };
  struct DatabaseOpenFailed {
    std::string stage;
    std::string path;
    std::string message;
    bool operator==(const DatabaseOpenFailed&) const = default;
  };
  struct InvalidDatabase {
    std::string detail;
    bool operator==(const InvalidDatabase&) const = default;
  };
  struct ChatStorageUnreadable {
    std::string detail;
    bool operator==(const ChatStorageUnreadable&) const = default;
  };
  struct DestinationNotWritable {
    std::string path;
    bool operator==(const DestinationNotWritable&) const = default;
  };
  struct IOFailure {
    std::string message;
    bool operator==(const IOFailure&) const = default;
  };
  // The archive at the destination is somebody else's.
  struct ForeignArchive {
    std::string owner;  // their number as it is shown
    bool operator==(const ForeignArchive&) const = default;
  };
  // No chat is the one that was asked for.
  struct UnknownChat {
    std::string wanted;
    std::vector<std::string> chats;  // that there are, a line for each
    bool areNearest = false;         // those alone that are called much the same
    bool operator==(const UnknownChat&) const = default;
  };
  // More chats than one may be meant.
  struct AmbiguousChat {
    std::string wanted;
    std::vector<std::string> chats;  // that may be meant, a line for each
    bool operator==(const AmbiguousChat&) const = default;
  };
  struct MissingManifestPlist {
    bool operator==(const MissingManifestPlist&) const = default;
  };
  struct MissingManifestDB {
    bool operator==(const MissingManifestDB&) const = default;
  };
  struct EncryptedBackup {
    bool operator==(const EncryptedBackup&) const = default;
  };
  struct NeedsBackupPassword {
    bool operator==(const NeedsBackupPassword&) const = default;
  };
  struct WrongBackupPassword {
    bool operator==(const WrongBackupPassword&) const = default;
  };
  struct Cancelled {
    bool operator==(const Cancelled&) const = default;
  };
  using Case = std::variant<BackupNotFound, NotABackup, MultipleDeviceBackups, ManifestDecryptFailed,
                            DatabaseOpenFailed, InvalidDatabase, ChatStorageUnreadable, DestinationNotWritable,
                            IOFailure, ForeignArchive, UnknownChat, AmbiguousChat, MissingManifestPlist,
                            MissingManifestDB, EncryptedBackup, NeedsBackupPassword, WrongBackupPassword, Cancelled>;

  explicit TidewellError(Case value);

  static TidewellError backupNotFound(std::string path);
  static TidewellError notABackup(std::string detail);
  static TidewellError multipleDeviceBackups(std::vector<std::string> folderNames);
  static TidewellError manifestDecryptFailed(std::string detail);
  static TidewellError databaseOpenFailed(std::string stage, std::string path, std::string message);
  static TidewellError invalidDatabase(std::string detail);
  static TidewellError chatStorageUnreadable(std::string detail);
  static TidewellError destinationNotWritable(std::string path);
  static TidewellError ioFailure(std::string message);
  static TidewellError foreignArchive(std::string owner);
  static TidewellError unknownChat(std::string wanted, std::vector<std::string> chats, bool areNearest);
  static TidewellError ambiguousChat(std::string wanted, std::vector<std::string> chats);
  static TidewellError missingManifestPlist();
  static TidewellError missingManifestDB();
  static TidewellError encryptedBackup();
  static TidewellError needsBackupPassword();
  static TidewellError wrongBackupPassword();
  static TidewellError cancelled();

  const Case& value() const { return value_; }
  template <typename SomeCase>
  bool is() const {
    return std::holds_alternative<SomeCase>(value_);
  }
  // Whether `error` is TidewellError::cancelled.
  static bool isCancellation(const std::exception& error);
  // The case by name: "backupNotFound", "ioFailure", …
  std::string_view caseName() const;

  const std::string& errorDescription() const { return description_; }
  // What to do about it; absent for most cases.
  std::optional<std::string> recoverySuggestion() const;
  const char* what() const noexcept override { return description_.c_str(); }

  bool operator==(const TidewellError& other) const { return value_ == other.value_; }

 private:
  Case value_;
  std::string description_;
};
