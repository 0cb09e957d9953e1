#include "Tidewell/Session/ExportState.h"

#include "TidewellCore/Export/DiskSpace.h"
#include "TidewellCore/Export/ExportTiming.h"
#include "TidewellCore/Platform/Text.h"

namespace {

std::optional<std::string_view> nonEmpty(std::string_view text) {
  if (text.empty()) return std::nullopt;
  return text;
}

}  // namespace

std::optional<std::string_view> ExportState::currentPassword() const {
  if (const auto typed = nonEmpty(Text::trimmedPart(textOf(backupPassword)))) return typed;
  return storedPassword ? std::optional(textOf(*storedPassword)) : std::nullopt;
}

bool ExportState::hasPasswordIfNeeded() const {
  return backupInfo && (!backupInfo->isEncrypted || currentPassword().has_value());
}

bool ExportState::canContinueFromBackup() const {
  return hasPasswordIfNeeded() && !isInspecting && !isScanning && !isUnlocking;
}

std::int64_t ExportState::selectedCount() const { return scanResult ? scanResult->count(includedKinds) : 0; }

std::int64_t ExportState::selectedBytes() const { return scanResult ? scanResult->bytes(includedKinds) : 0; }

std::optional<bool> ExportState::hasEnoughSpace() const {
  if (!availableBytes || !scanResult || !destinationURL) return std::nullopt;
  return DiskSpace::fitsExport(selectedBytes(), *availableBytes);
}

bool ExportState::canExport() const {
  return hasPasswordIfNeeded() && scanResult && destinationURL && !includedKinds.empty() && !isExporting &&
         !isScanning && hasEnoughSpace().value_or(true);
}

std::optional<std::string_view> ExportState::startExportHint() const {
  if (step != WizardStep::options || canExport()) return std::nullopt;
  if (!destinationURL) return "Choose where to save first";
  if (includedKinds.empty()) return "Choose at least one type to export";
  if (hasEnoughSpace() == false) return "Not enough free space — choose another folder";
  return std::nullopt;
}

bool ExportState::startExportHintOpensFolderPicker() const { return !destinationURL || hasEnoughSpace() == false; }

std::optional<std::string> ExportState::remainingDescription(Date now) const {
  if (!progress || !exportStartedAt || progress->phase < ExportProgress::Phase::copyingMedia) return std::nullopt;
  const double elapsed = (now - *exportStartedAt).count();
  const auto seconds = ExportTiming::remaining(elapsed, progress->completed, progress->total);
  return seconds ? std::optional(ExportTiming::formatRemaining(*seconds)) : std::nullopt;
}
