#include "TidewellCore/Export/BackupReading.h"

#include "TidewellCore/TidewellError.h"

namespace {

using Phase = ExportProgress::Phase;

void requireWhatsApp(const ManifestStore& manifest) {
  if (manifest.chatStorage || !manifest.media.empty()) return;
  throw TidewellError::chatStorageUnreadable("This backup holds no WhatsApp data.");
}

}  // namespace

BackupSource BackupReading::read(const BackupToRead& backup, ProgressReporter& progress, const RunControl& control) {
  return read(open(backup, progress, control), progress, control, {});
}

OpenedBackup BackupReading::open(const BackupToRead& backup, ProgressReporter& progress, const RunControl& control) {
  progress.begin(Phase::preparing);
  OpenedBackup opened =
      OpenedBackup::open(backup.backup, backup.password, control, backup.unlockReport, {.kept = backup.passwordKey});
  throwIfCancelled(control.isCancelled);
  return opened;
}

BackupSource BackupReading::read(OpenedBackup opened, ProgressReporter& progress, const RunControl& control,
                                 const std::function<void(const ManifestStore&)>& look) {
  progress.begin(Phase::readingChats);
  return BackupSource::load(std::move(opened), control.isCancelled, [&](const ManifestStore& manifest) {
    requireWhatsApp(manifest);
    if (look) look(manifest);
  });
}
