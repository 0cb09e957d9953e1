#include "TidewellCore/TidewellError.h"

#include <array>
#include <utility>

namespace {

constexpr const char* notABackupText = "This folder isn't an iPhone backup.";
constexpr const char* notABackupAdvice =
    "Choose the device folder that contains Manifest.plist, Manifest.db, and two-character subfolders. That is "
    "usually ~/Library/Application Support/MobileSync/Backup/<UDID>.";
constexpr const char* encryptedText = "This iPhone backup is encrypted. Enter the password you set in Finder.";
constexpr const char* encryptedAdvice =
    "Encrypted Finder backups are supported. Enter the password you chose when you turned on “Encrypt local "
    "backup” in Finder or iTunes.\n\nLorewick unlocks the backup on this Mac only. The password is not written "
    "to disk unless you choose to save it in Keychain.";

struct Description {
  std::string operator()(const TidewellError::BackupNotFound& c) const {
    return "The backup folder “" + c.path + "” does not exist.";
  }
  std::string operator()(const TidewellError::NotABackup&) const { return notABackupText; }
  std::string operator()(const TidewellError::MultipleDeviceBackups&) const {
    return "That folder contains more than one device backup.";
  }
  std::string operator()(const TidewellError::ManifestDecryptFailed& c) const {
    return "Could not decrypt Manifest.db. " + c.detail;
  }
  std::string operator()(const TidewellError::DatabaseOpenFailed& c) const {
    return "Could not open the backup database (" + c.stage + "). " + c.message + " [" + c.path + "]";
  }
  std::string operator()(const TidewellError::InvalidDatabase& c) const {
    return "Could not read the backup database. " + c.detail;
  }
  std::string operator()(const TidewellError::ChatStorageUnreadable& c) const {
    return "Could not read WhatsApp’s chat database. " + c.detail;
  }
  std::string operator()(const TidewellError::DestinationNotWritable& c) const {
    return "Cannot write to the destination folder “" + c.path + "”.";
  }
  std::string operator()(const TidewellError::IOFailure& c) const { return c.message; }
  std::string operator()(const TidewellError::ForeignArchive& c) const {
    return "These chats belong to " + c.owner + ". Choose another folder for this phone.";
  }
  std::string operator()(const TidewellError::UnknownChat& c) const {
    return "No chat of this backup is called “" + c.wanted + "”, or has that number.";
  }
  std::string operator()(const TidewellError::AmbiguousChat& c) const {
    return "More than one chat of this backup is called “" + c.wanted + "”.";
  }
  std::string operator()(const TidewellError::MissingManifestPlist&) const { return notABackupText; }
  std::string operator()(const TidewellError::MissingManifestDB&) const { return notABackupText; }
  std::string operator()(const TidewellError::EncryptedBackup&) const { return encryptedText; }
  std::string operator()(const TidewellError::NeedsBackupPassword&) const { return encryptedText; }
  std::string operator()(const TidewellError::WrongBackupPassword&) const {
    return "That backup password isn’t right.";
  }
  std::string operator()(const TidewellError::Cancelled&) const { return "The export was cancelled."; }
};

std::string list(std::string text, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) text += "\n" + line;
  return text;
}

struct Suggestion {
  using Text = std::optional<std::string>;

  Text operator()(const TidewellError::BackupNotFound&) const { return std::nullopt; }
  Text operator()(const TidewellError::NotABackup&) const { return notABackupAdvice; }
  Text operator()(const TidewellError::MultipleDeviceBackups&) const {
    return "Open the Backup folder and select one device folder (the one that contains Manifest.plist).";
  }
  Text operator()(const TidewellError::ManifestDecryptFailed&) const {
    return "The backup password unlocked the key bag, but Manifest.db still did not decrypt to a SQLite file. Try "
           "the password again. If it keeps failing, run tidewell scan on that backup and send the diagnostic lines "
           "(they never include the password).";
  }
  Text operator()(const TidewellError::DatabaseOpenFailed&) const {
    return "The decrypted Manifest.db could not be opened. A Finder backup in WAL mode needs a writable temporary "
           "copy. If this keeps happening, run tidewell scan and send the diagnostic lines.";
  }
  Text operator()(const TidewellError::InvalidDatabase&) const { return std::nullopt; }
  Text operator()(const TidewellError::ChatStorageUnreadable&) const { return std::nullopt; }
  Text operator()(const TidewellError::DestinationNotWritable&) const {
    return "Choose a folder you can write to, such as Documents or Desktop.";
  }
  Text operator()(const TidewellError::IOFailure&) const { return std::nullopt; }
  Text operator()(const TidewellError::ForeignArchive&) const { return std::nullopt; }
  Text operator()(const TidewellError::UnknownChat& c) const {
    if (c.chats.empty()) return "It holds no chats.";
    return list(c.areNearest ? "These are called much the same:" : "It holds these chats:", c.chats);
  }
  Text operator()(const TidewellError::AmbiguousChat& c) const {
    return list("Name the one that you mean by its number or by what stands last in its line:", c.chats);
  }
  Text operator()(const TidewellError::MissingManifestPlist&) const { return notABackupAdvice; }
  Text operator()(const TidewellError::MissingManifestDB&) const { return notABackupAdvice; }
  Text operator()(const TidewellError::EncryptedBackup&) const { return encryptedAdvice; }
  Text operator()(const TidewellError::NeedsBackupPassword&) const { return encryptedAdvice; }
  Text operator()(const TidewellError::WrongBackupPassword&) const {
    return "Try again. It is the password from Finder’s Encrypt local backup checkbox, not your iPhone passcode.";
  }
  Text operator()(const TidewellError::Cancelled&) const { return std::nullopt; }
};

// In the order of the variant's alternatives.
constexpr std::array<std::string_view, std::variant_size_v<TidewellError::Case>> caseNames{"backupNotFound",
                                                                                           "notABackup",
                                                                                           "multipleDeviceBackups",
                                                                                           "manifestDecryptFailed",
                                                                                           "databaseOpenFailed",
                                                                                           "invalidDatabase",
                                                                                           "chatStorageUnreadable",
                                                                                           "destinationNotWritable",
                                                                                           "ioFailure",
                                                                                           "foreignArchive",
                                                                                           "unknownChat",
                                                                                           "ambiguousChat",
                                                                                           "missingManifestPlist",
                                                                                           "missingManifestDB",
                                                                                           "encryptedBackup",
                                                                                           "needsBackupPassword",
                                                                                           "wrongBackupPassword",
                                                                                           "cancelled"};

}  // namespace

TidewellError::TidewellError(Case value) : value_(std::move(value)), description_(std::visit(Description(), value_)) {}

std::string_view TidewellError::caseName() const { return caseNames[value_.index()]; }

std::optional<std::string> TidewellError::recoverySuggestion() const { return std::visit(Suggestion(), value_); }

TidewellError TidewellError::backupNotFound(std::string path) { return TidewellError(BackupNotFound{std::move(path)}); }
TidewellError TidewellError::notABackup(std::string detail) { return TidewellError(NotABackup{std::move(detail)}); }
TidewellError TidewellError::multipleDeviceBackups(std::vector<std::string> folderNames) {
  return TidewellError(MultipleDeviceBackups{std::move(folderNames)});
}
TidewellError TidewellError::manifestDecryptFailed(std::string detail) {
  return TidewellError(ManifestDecryptFailed{std::move(detail)});
}
TidewellError TidewellError::databaseOpenFailed(std::string stage, std::string path, std::string message) {
  return TidewellError(DatabaseOpenFailed{std::move(stage), std::move(path), std::move(message)});
}
TidewellError TidewellError::invalidDatabase(std::string detail) {
  return TidewellError(InvalidDatabase{std::move(detail)});
}
TidewellError TidewellError::chatStorageUnreadable(std::string detail) {
  return TidewellError(ChatStorageUnreadable{std::move(detail)});
}
TidewellError TidewellError::destinationNotWritable(std::string path) {
  return TidewellError(DestinationNotWritable{std::move(path)});
}
TidewellError TidewellError::ioFailure(std::string message) { return TidewellError(IOFailure{std::move(message)}); }
TidewellError TidewellError::foreignArchive(std::string owner) {
  return TidewellError(ForeignArchive{std::move(owner)});
}
TidewellError TidewellError::unknownChat(std::string wanted, std::vector<std::string> chats, bool areNearest) {
  return TidewellError(UnknownChat{std::move(wanted), std::move(chats), areNearest});
}
TidewellError TidewellError::ambiguousChat(std::string wanted, std::vector<std::string> chats) {
  return TidewellError(AmbiguousChat{std::move(wanted), std::move(chats)});
}
TidewellError TidewellError::missingManifestPlist() { return TidewellError(MissingManifestPlist{}); }
TidewellError TidewellError::missingManifestDB() { return TidewellError(MissingManifestDB{}); }
TidewellError TidewellError::encryptedBackup() { return TidewellError(EncryptedBackup{}); }
TidewellError TidewellError::needsBackupPassword() { return TidewellError(NeedsBackupPassword{}); }
TidewellError TidewellError::wrongBackupPassword() { return TidewellError(WrongBackupPassword{}); }
TidewellError TidewellError::cancelled() { return TidewellError(Cancelled{}); }

bool TidewellError::isCancellation(const std::exception& error) {
  const auto* known = dynamic_cast<const TidewellError*>(&error);
  return known != nullptr && known->is<Cancelled>();
}
