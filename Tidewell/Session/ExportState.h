#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Session/WizardStep.h"
#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/Crypto/SecretBytes.h"
#include "TidewellCore/Export/ExportSummary.h"
#include "TidewellCore/ExportProgress.h"
#include "TidewellCore/MediaKind.h"

// Everything that the wizard's screens show, and what follows from it. The rules
// are functions of the record alone.
struct ExportState {
  WizardStep step = WizardStep::backup;
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
  bool isInspecting = false;
  bool isScanning = false;
  bool isExporting = false;
  std::optional<ExportProgress> progress;
  std::optional<ExportSummary> summary;
  std::optional<std::string> errorMessage;  // absent: no alert
  std::optional<std::string> recoverySuggestion;
  std::optional<std::int64_t> availableBytes;  // on the destination's volume
  bool dropTargeted = false;                   // a folder is being dragged over the window
  std::optional<Date> exportStartedAt;
  SecretBytes backupPassword;  // as typed, in UTF-8
  bool rememberBackupPassword = false;
  bool hasStoredPassword = false;
  bool isUnlocking = false;
  bool isCancellingUnlock = false;
  bool focusBackupPassword = false;           // asks the screen to put the focus into the password field
  std::optional<SecretBytes> storedPassword;  // read from, or just written to, the password store

  // What was typed, without white space at both ends, else the stored password;
  // absent when there is neither. Valid until a password changes.
  std::optional<std::string_view> currentPassword() const;
  bool canContinueFromBackup() const;

  // Of the kinds chosen; 0 before a scan.
  std::int64_t selectedCount() const;
  std::int64_t selectedBytes() const;
  // Absent while the space, the need or the destination is not known.
  std::optional<bool> hasEnoughSpace() const;
  bool canExport() const;
  // Why the export cannot start, in English; absent when it can, or for another reason.
  std::optional<std::string_view> startExportHint() const;
  bool startExportHintOpensFolderPicker() const;
  // In English; absent before media is copied and while there is too little to tell.
  std::optional<std::string> remainingDescription(Date now) const;

 private:
  bool hasPasswordIfNeeded() const;
};
