#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Session/ChatChoice.h"
#include "Tidewell/Session/WizardStep.h"
#include "Tidewell/Session/WizardWork.h"
#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/Crypto/PasswordKey.h"
#include "TidewellCore/Crypto/SecretBytes.h"
#include "TidewellCore/Export/ExportSummary.h"
#include "TidewellCore/Export/PhaseClock.h"
#include "TidewellCore/Export/VerifySummary.h"
#include "TidewellCore/ExportProgress.h"
#include "TidewellCore/MediaKind.h"

// What is asked before a running export is ended.
enum class StopQuestion {
  none,
  cancel,  // the export alone
  close,   // the window with it
};

// Everything that the wizard's screens show, and what follows from it. The rules
// are functions of the record alone.
struct ExportState {
  WizardStep step = WizardStep::backup;
  WizardWork work = Idle();
  BackupLibrarySnapshot library;
  bool isRefreshingLibrary = false;
  bool hasReadLibrary = false;                  // at least once
  std::optional<std::string> selectedBackupID;  // the path of the chosen backup
  std::optional<std::filesystem::path> backupURL;
  std::optional<BackupInfo> backupInfo;
  std::optional<ScanResult> scanResult;
  std::optional<std::filesystem::path> destinationURL;
  MediaKinds includedKinds{MediaKind::allCases.begin(), MediaKind::allCases.end()};
  bool exportTranscripts = true;
  bool exportMessageFiles = false;  // for other programs; only together with transcripts
  ChatChoice chatChoice;
  std::optional<ExportProgress> progress;
  std::optional<ExportSummary> summary;
  std::optional<VerifySummary> verification;  // of what `summary` tells of
  std::optional<std::string> errorMessage;    // absent: no alert
  std::optional<std::string> recoverySuggestion;
  bool isForeignArchive = false;                      // the last error: the destination has another owner's archive
  std::optional<std::int64_t> availableBytes;         // on the destination's volume
  std::int64_t keptBytes = 0;                         // what exports that broke off left in the destination
  bool dropTargeted = false;                          // a folder is being dragged over the window
  std::optional<Date> exportStartedAt;                // the running export, else the last one
  PhaseClock phaseClock;                              // of the running export or verification, else the last one
  StopQuestion stopQuestion = StopQuestion::none;     // only while an export runs
  std::optional<std::filesystem::path> unopenedPath;  // what the desktop could not open, until that was acknowledged
  SecretBytes backupPassword;                         // as typed, in UTF-8
  bool hasEditedPassword = false;                     // since the backup was chosen
  bool rememberBackupPassword = false;
  bool hasStoredPassword = false;
  bool hasPasswordStore = true;                 // false when it is known that there is none
  bool focusBackupPassword = false;             // asks the screen to put the focus into the password field
  std::optional<SecretBytes> storedPassword;    // read from, or just written to, the password store
  std::optional<SecretBytes> unlockedPassword;  // has opened the chosen backup
  std::optional<PasswordKey> passwordKey;       // what took so long to make of it

  bool isInspecting() const { return std::holds_alternative<Inspecting>(work); }
  bool isScanning() const { return std::holds_alternative<Scanning>(work); }
  bool isUnlocking() const;
  bool isCancellingUnlock() const;
  // While the alert about that shows.
  bool offersSamePerson() const { return errorMessage && isForeignArchive; }
  bool isExporting() const { return std::holds_alternative<Exporting>(work); }
  bool isVerifying() const { return std::holds_alternative<Verifying>(work); }
  // Whether `run` is what the wizard is busy with.
  bool isRunning(const Run& run) const;

  // What was typed, without white space at both ends, else the stored password;
  // absent when there is neither. Valid until a password changes.
  std::optional<std::string_view> currentPassword() const;
  // What may open the chosen backup, in the order to try: what was typed, to the letter and then without white
  // space at both ends, else the stored password.
  std::vector<SecretBytes> passwordsToTry() const;
  bool canContinueFromBackup() const;
  // Why not, in English; absent when it can.
  std::optional<std::string_view> continueHint() const;

  // The media of these kinds in the chosen chats, whatever their days; none before a scan.
  MediaTypeStats media(const MediaKinds& kinds) const;
  // Of the kinds chosen.
  std::int64_t selectedCount() const { return media(includedKinds).count; }
  std::int64_t selectedBytes() const { return media(includedKinds).byteCount; }
  // What a broken-off export has left need not be copied again. Absent while the space, the need or the destination
  // is not known, and where chosen days may make the difference.
  std::optional<bool> hasEnoughSpace() const;
  bool canExport() const;
  // All that the chosen backup holds.
  bool exportsEverything() const;
  bool canVerify() const { return step == WizardStep::done && summary && std::holds_alternative<Idle>(work); }
  // Why the export cannot start, in English; absent when it can, or for another reason.
  std::optional<std::string_view> startExportHint() const;
  bool startExportHintOpensFolderPicker() const;
  // Absent before media is copied and while there is too little to tell.
  std::optional<TimeLeft> timeLeft(Date now) const;
  // The same in English.
  std::optional<std::string> remainingDescription(Date now) const;

  bool operator==(const ExportState&) const = default;

 private:
  bool hasPasswordIfNeeded() const;
  bool hasNoChat() const;
};
