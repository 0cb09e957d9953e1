#include "Tidewell/Session/ExportState.h"

#include <algorithm>

#include "TidewellCore/Destination/DiskSpace.h"
#include "TidewellCore/Export/ExportTiming.h"
#include "TidewellCore/Platform/Text.h"

namespace {

std::optional<std::string_view> nonEmpty(std::string_view text) {
  if (text.empty()) return std::nullopt;
  return text;
}

}  // namespace

bool ExportState::isUnlocking() const {
  const auto* scanning = std::get_if<Scanning>(&work);
  return scanning != nullptr && scanning->isUnlocking;
}

bool ExportState::isCancellingUnlock() const {
  const auto* scanning = std::get_if<Scanning>(&work);
  return scanning != nullptr && scanning->isCancelling;
}

bool ExportState::isRunning(const Run& run) const {
  const auto* scanning = std::get_if<Scanning>(&work);
  const auto* exporting = std::get_if<Exporting>(&work);
  const auto* verifying = std::get_if<Verifying>(&work);
  return (scanning != nullptr && scanning->run == run) || (exporting != nullptr && exporting->run == run) ||
         (verifying != nullptr && verifying->run == run);
}

std::optional<std::string_view> ExportState::currentPassword() const {
  if (const auto typed = nonEmpty(Text::trimmedPart(textOf(backupPassword)))) return typed;
  return storedPassword ? std::optional(textOf(*storedPassword)) : std::nullopt;
}

std::vector<SecretBytes> ExportState::passwordsToTry() const {
  const std::string_view typed = textOf(backupPassword);
  const std::string_view trimmed = Text::trimmedPart(typed);
  std::vector<SecretBytes> passwords;
  if (trimmed.empty() && storedPassword) passwords.push_back(*storedPassword);
  if (!trimmed.empty()) passwords.push_back(backupPassword);
  if (!trimmed.empty() && trimmed != typed) passwords.emplace_back(trimmed.begin(), trimmed.end());
  return passwords;
}

bool ExportState::hasPasswordIfNeeded() const {
  return backupInfo && (!backupInfo->isEncrypted || currentPassword().has_value());
}

bool ExportState::canContinueFromBackup() const { return hasPasswordIfNeeded() && !isInspecting() && !isScanning(); }

std::optional<std::string_view> ExportState::continueHint() const {
  if (canContinueFromBackup()) return std::nullopt;
  if (isInspecting()) return "Reading this backup…";
  if (isScanning()) return "Reading chats…";
  return backupInfo ? "Enter the backup password first" : "Choose a backup first";
}

MediaTypeStats ExportState::media(const MediaKinds& kinds) const {
  return scanResult ? chatChoice.stats(*scanResult, kinds) : MediaTypeStats();
}

// Of those that there are none is chosen.
bool ExportState::hasNoChat() const {
  return scanResult && !scanResult->chats.empty() && chatChoice.count(*scanResult) == 0;
}

std::optional<bool> ExportState::hasEnoughSpace() const {
  if (!availableBytes || !scanResult || !destinationURL) return std::nullopt;
  const bool fits = DiskSpace::fitsExport(std::max<std::int64_t>(selectedBytes() - keptBytes, 0), *availableBytes);
  return fits || !chatChoice.hasDays() ? std::optional(fits) : std::nullopt;
}

bool ExportState::canExport() const {
  return hasPasswordIfNeeded() && scanResult && destinationURL && !includedKinds.empty() && !hasNoChat() &&
         !chatChoice.fault() && !isExporting() && !isScanning() && !isVerifying() && hasEnoughSpace().value_or(true);
}

bool ExportState::exportsEverything() const {
  return scanResult && exportTranscripts && includedKinds.size() == MediaKind::allCases.size() &&
         chatChoice.selection(*scanResult) == Selection();
}

std::optional<std::string_view> ExportState::startExportHint() const {
  if (step != WizardStep::options || canExport()) return std::nullopt;
  if (!destinationURL) return "Choose where to save first";
  if (includedKinds.empty()) return "Choose at least one type to export";
  if (hasNoChat()) return "Choose at least one chat to export";
  if (const auto fault = chatChoice.fault()) return fault;
  if (hasEnoughSpace() == false) return "Not enough free space — choose another folder";
  return std::nullopt;
}

bool ExportState::startExportHintOpensFolderPicker() const { return !destinationURL || hasEnoughSpace() == false; }

std::optional<TimeLeft> ExportState::timeLeft(Date now) const {
  return progress ? phaseClock.timeLeft(now.time_since_epoch()) : std::nullopt;
}

std::optional<std::string> ExportState::remainingDescription(Date now) const {
  const std::optional<TimeLeft> time = timeLeft(now);
  return time ? std::optional(ExportTiming::format(*time)) : std::nullopt;
}
