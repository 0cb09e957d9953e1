#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "TidewellCore/Backup/BackupInfo.h"
#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/CleanUp/DedupeSummary.h"
#include "TidewellCore/Crypto/BackupUnlockReport.h"
#include "TidewellCore/Crypto/PasswordKey.h"
#include "TidewellCore/Export/ExportOptions.h"
#include "TidewellCore/Export/ExportSummary.h"
#include "TidewellCore/ExportProgress.h"
#include "TidewellCore/TranscriptStyle.h"

// What is to be looked at.
struct ScanJob {
  std::filesystem::path backup;
  std::optional<std::string_view> password;  // the caller's; must outlive the unlock
  Selection selection;                       // what is counted
  // Called once for an encrypted backup, on failure too; the password is not looked at again, so that
  // who keeps it can wipe it then.
  UnlockObserver unlockReport;
  // Unless null, gets the key that opened the backup when the scan succeeds, and nothing for a plain backup; an
  // export that is given it does not wait for it again.
  std::optional<PasswordKey>* passwordKey = nullptr;
};

// What is to be exported, and where to.
struct ExportJob {
  std::filesystem::path backup;
  std::filesystem::path destination;
  ExportOptions options = ExportOptions::defaultOptions();
  Selection selection;                       // what is taken this time; what the export has already stays
  std::optional<std::string_view> password;  // the caller's; must outlive the unlock
  const PasswordKey* passwordKey = nullptr;  // of an earlier scan; the caller's; must outlive the run
  UnlockObserver unlockReport;               // as of a scan
  bool isSamePerson = false;                 // the archive is this phone's, whatever number its owner had
};

// The front of the core: looks into backups and exports them. Works on the
// caller's thread; every operation throws TidewellError, and what the file
// system or a property list reports.
struct Exporter {
  TimeZone timeZone =
      TimeZone::current();  // of the dates in transcripts, of a selection's days and, see below, of the dates in names
  Locale locale = Locale::current();
  TranscriptStyle transcriptStyle = TranscriptStyle::matching(Locale::current());
  // Somebody chose them. Otherwise the names in a destination go on as NamingMemory has them.
  bool isTimeZoneChosen = false;
  bool isLocaleChosen = false;

  BackupInfo inspect(const std::filesystem::path& backup) const;

  // Throws TidewellError::unknownChat and ambiguousChat for a selection that does not fit the backup, as an
  // export does before it changes anything.
  ScanResult scan(const ScanJob& job, const CancellationCheck& isCancelled = {}) const;

  // A password key that does not fit the backup is passed over for the password.
  // An export's own folder "messages" as the destination means the export above it.
  // A file that cannot be copied is recorded and does not end the run; a disk that
  // is full and a backup that was taken away do, with TidewellError::ioFailure. An
  // export into the same destination copies only what is new; another person's is left
  // as it is, with TidewellError::foreignArchive.
  ExportSummary exportBackup(const ExportJob& job, const RunControl& control = {}) const;

  // Merges the folders that earlier exports left twice; without `apply` it only reports them.
  DedupeSummary dedupe(const std::filesystem::path& destination, bool apply,
                       const CancellationCheck& isCancelled = {}) const;

  // In bytes, for a folder that need not exist yet.
  std::int64_t freeSpace(const std::filesystem::path& folder) const;

 private:
  ExportSummary runExport(const ExportJob& job, const RunControl& control) const;
};
