#include "TidewellCore/TidewellError.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Tests/Support/Failures.h"

namespace {

constexpr const char* chooseDeviceFolder =
    "Choose the device folder that contains Manifest.plist, Manifest.db, and two-character subfolders. "
    "That is usually ~/Library/Application Support/MobileSync/Backup/<UDID>.";
constexpr const char* enterPassword = "This iPhone backup is encrypted. Enter the password you set in Finder.";
constexpr const char* passwordAdvice =
    "Encrypted Finder backups are supported. Enter the password you chose when you turned on “Encrypt local "
    "backup” in Finder or iTunes.\n\nLorewick unlocks the backup on this Mac only. The password is not "
    "written to disk unless you choose to save it in Keychain.";

struct Wording {
  TidewellError error;
  std::string caseName;
  std::string description;
  std::optional<std::string> suggestion;
};

std::vector<Wording> wordings() {
  return {
      {TidewellError::backupNotFound("/x y"), "backupNotFound", "The backup folder “/x y” does not exist.", {}},
      {TidewellError::notABackup("/secret/detail"), "notABackup", "This folder isn't an iPhone backup.",
       chooseDeviceFolder},
      {TidewellError::multipleDeviceBackups({"a", "b"}), "multipleDeviceBackups",
       "That folder contains more than one device backup.",
       "Open the Backup folder and select one device folder (the one that contains Manifest.plist)."},
      {TidewellError::manifestDecryptFailed("Why."), "manifestDecryptFailed", "Could not decrypt Manifest.db. Why.",
       "The backup password unlocked the key bag, but Manifest.db still did not decrypt to a SQLite file. "
       "Try the "
       "password again. If it keeps failing, run tidewell scan on that backup and send the diagnostic lines "
       "(they "
       "never include the password)."},
      {TidewellError::databaseOpenFailed("open Manifest.db read-only", "/x/Manifest.db", "file is not a database"),
       "databaseOpenFailed",
       "Could not open the backup database (open Manifest.db read-only). file is not a database "
       "[/x/Manifest.db]",
       "The decrypted Manifest.db could not be opened. A Finder backup in WAL mode needs a writable "
       "temporary copy. "
       "If this keeps happening, run tidewell scan and send the diagnostic lines."},
      {TidewellError::invalidDatabase("Why."), "invalidDatabase", "Could not read the backup database. Why.", {}},
      {TidewellError::chatStorageUnreadable("Why."),
       "chatStorageUnreadable",
       "Could not read WhatsApp’s chat database. Why.",
       {}},
      {TidewellError::destinationNotWritable("/out"), "destinationNotWritable",
       "Cannot write to the destination folder “/out”.",
       "Choose a folder you can write to, such as Documents or Desktop."},
      {TidewellError::ioFailure(" as it is\n"), "ioFailure", " as it is\n", {}},
      {TidewellError::foreignArchive("+55 11 90000-1111"),
       "foreignArchive",
       "These chats belong to +55 11 90000-1111. Choose another folder for this phone.",
       {}},
      {TidewellError::unknownChat("Anna", {"Ana · +55 11 90000-1111"}, true), "unknownChat",
       "No chat of this backup is called “Anna”, or has that number.",
       "These are called much the same:\nAna · +55 11 90000-1111"},
      {TidewellError::ambiguousChat("Ana", {"Ana · 1", "Ana · 2"}), "ambiguousChat",
       "More than one chat of this backup is called “Ana”.",
       "Name the one that you mean by its number or by what stands last in its line:\nAna · 1\nAna · 2"},
      {TidewellError::missingManifestPlist(), "missingManifestPlist", "This folder isn't an iPhone backup.",
       chooseDeviceFolder},
      {TidewellError::missingManifestDB(), "missingManifestDB", "This folder isn't an iPhone backup.",
       chooseDeviceFolder},
      {TidewellError::encryptedBackup(), "encryptedBackup", enterPassword, passwordAdvice},
      {TidewellError::needsBackupPassword(), "needsBackupPassword", enterPassword, passwordAdvice},
      {TidewellError::wrongBackupPassword(), "wrongBackupPassword", "That backup password isn’t right.",
       "Try again. It is the password from Finder’s Encrypt local backup checkbox, not your iPhone "
       "passcode."},
      {TidewellError::cancelled(), "cancelled", "The export was cancelled.", {}},
  };
}

TEST(TidewellError, EveryCaseHasItsNameAndItsTexts) {
  for (const Wording& wording : wordings()) {
    EXPECT_EQ(wording.error.caseName(), wording.caseName);
    EXPECT_EQ(wording.error.errorDescription(), wording.description) << wording.caseName;
    EXPECT_EQ(wording.error.what(), wording.description) << wording.caseName;
    EXPECT_EQ(wording.error.recoverySuggestion(), wording.suggestion) << wording.caseName;
  }
}

TEST(TidewellError, TheTableAboveHoldsEveryCaseOnce) {
  const auto all = wordings();
  ASSERT_EQ(all.size(), std::variant_size_v<TidewellError::Case>);
  for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i].error.value().index(), i);
}

TEST(TidewellError, EqualsByCaseAndPayload) {
  const auto all = wordings();
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t j = 0; j < all.size(); ++j) EXPECT_EQ(all[i].error == all[j].error, i == j) << i << ' ' << j;
  }
  EXPECT_NE(TidewellError::ioFailure("a"), TidewellError::ioFailure("b"));
  EXPECT_NE(TidewellError::databaseOpenFailed("s", "p", "m"), TidewellError::databaseOpenFailed("s", "m", "p"));
  EXPECT_NE(TidewellError::notABackup("a"), TidewellError::notABackup("b")) << "an unseen payload counts";
}

TEST(TidewellError, TellsItsCaseByType) {
  const TidewellError error = TidewellError::cancelled();
  EXPECT_TRUE(error.is<TidewellError::Cancelled>());
  EXPECT_FALSE(error.is<TidewellError::IOFailure>());
}

TEST(TidewellError, TellsACancellationFromEveryOtherFailure) {
  EXPECT_TRUE(TidewellError::isCancellation(TidewellError::cancelled()));
  EXPECT_FALSE(TidewellError::isCancellation(TidewellError::wrongBackupPassword()));
  EXPECT_FALSE(TidewellError::isCancellation(std::runtime_error("The export was cancelled.")));
}

TEST(TidewellError, KeepsTheFoldersItFound) {
  const TidewellError error = TidewellError::multipleDeviceBackups({"a", "b"});
  EXPECT_EQ(std::get<TidewellError::MultipleDeviceBackups>(error.value()).folderNames,
            (std::vector<std::string>{"a", "b"}));
}

TEST(TidewellError, IsCaughtAsAStandardException) { EXPECT_THROW(throw TidewellError::cancelled(), std::exception); }

}  // namespace
