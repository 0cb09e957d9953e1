#include "Tidewell/Contents/BackupStepContent.h"

#include <algorithm>

#include "Tidewell/Contents/ContentText.h"

namespace {

QString detailLine(const DiscoveredBackup& backup, const L10n& texts) {
  const BackupInfo& info = backup.info;
  QStringList pieces;
  if (info.iosVersion) pieces.append(texts.format(u"iOS %@"_qs, {ContentText::text(*info.iosVersion)}));
  if (info.backupDate) pieces.append(texts.dateAndTime(*info.backupDate));
  if (backup.byteCount) pieces.append(texts.byteCount(*backup.byteCount));
  return pieces.isEmpty() ? texts.text(u"Finder backup"_qs) : texts.joined(pieces, u" · "_qs);
}

bool isListed(const ExportState& state, const BackupInfo& info) {
  return std::ranges::any_of(state.library.backups,
                             [&](const DiscoveredBackup& backup) { return backup.info.url == info.url; });
}

// What was read is still the backup before while the selected one is being read.
bool isReadAndEncrypted(const ExportState& state) {
  return state.backupInfo && state.backupInfo->isEncrypted && state.backupInfo->url.native() == state.selectedBackupID;
}

int indexOfSelected(const QList<BackupRowContent>& rows) {
  const auto found = std::ranges::find_if(rows, [](const BackupRowContent& row) { return row.selected; });
  return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

QList<BackupRowContent> rowsOf(const ExportState& state, const L10n& texts) {
  QList<BackupRowContent> rows;
  if (state.backupInfo && !isListed(state, *state.backupInfo)) {
    const DiscoveredBackup unlisted{.info = *state.backupInfo};
    rows.append(BackupRowContent::of(unlisted, unlisted.id() == state.selectedBackupID, texts));
  }
  for (const DiscoveredBackup& backup : state.library.backups) {
    rows.append(BackupRowContent::of(backup, backup.id() == state.selectedBackupID, texts));
  }
  for (BackupRowContent& row : rows) row.asksPassword = row.selected && isReadAndEncrypted(state);
  return rows;
}

QString unreadableText(const std::vector<UnreadableFolder>& folders, const L10n& texts) {
  if (folders.empty()) return {};
  return ContentText::counted("1 folder here is no readable backup", "%lld folders here are no readable backups",
                              static_cast<std::int64_t>(folders.size()), texts);
}

QString reasonsOf(const std::vector<UnreadableFolder>& folders, const L10n& texts) {
  QStringList lines;
  for (const UnreadableFolder& folder : folders) {
    lines.append(texts.joined(
        {ContentText::text(Text::repaired(folder.name)), texts.text(ContentText::text(Text::repaired(folder.reason)))},
        u": "_qs));
  }
  return lines.join(u'\n');
}

}  // namespace

BackupRowContent BackupRowContent::of(const DiscoveredBackup& backup, bool selected, const L10n& texts) {
  const BackupInfo& info = backup.info;
  return {.id = ContentText::text(backup.id()),
          .name = info.deviceName ? ContentText::text(*info.deviceName) : texts.text(u"iPhone"_qs),
          .detail = detailLine(backup, texts),
          .note = info.isEncrypted ? texts.text(u"Encrypted — enter the Finder backup password"_qs) : QString(),
          .selected = selected};
}

BackupStepContent BackupStepContent::of(const ExportState& state, const L10n& texts) {
  const bool isAccessDenied = state.library.access == BackupAccess::denied;
  const QList<BackupRowContent> backups = rowsOf(state, texts);
  const bool isLooking = state.isRefreshingLibrary && !state.hasReadLibrary && backups.isEmpty();
  return {.isLooking = isLooking,
          .isAccessDenied = isAccessDenied,
          .listsBackups = !state.library.backups.empty(),
          .showsHelp = backups.isEmpty() && !isAccessDenied && !isLooking,
          .rows = backups,
          .chosenRow = indexOfSelected(backups),
          .isInspecting = state.isInspecting(),
          .hasStoredPassword = state.hasStoredPassword,
          .rememberPassword = state.rememberBackupPassword,
          .hasTypedPassword = !state.backupPassword.empty(),
          .wantsPasswordFocus = state.focusBackupPassword,
          .canRemember = state.hasPasswordStore,
          .unreadable = unreadableText(state.library.unreadable, texts),
          .unreadableReasons = reasonsOf(state.library.unreadable, texts)};
}
