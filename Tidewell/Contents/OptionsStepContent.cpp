#include "Tidewell/Contents/OptionsStepContent.h"

#include "Tidewell/Contents/ContentText.h"

namespace {

QString mediaLine(const ScanResult& scan, const L10n& texts) {
  return texts.joined({texts.number(scan.mediaFileCount), texts.byteCount(scan.totalBytes)}, u" · "_qs);
}

MediaKindContent kindContent(MediaKind kind, const ExportState& state, const L10n& texts) {
  const MediaKinds only{kind};
  const MediaTypeStats media = state.media(only);
  const QString title = texts.text(ContentText::text(kind.displayName()));
  const QString size = texts.byteCount(media.byteCount);
  return {.rawValue = ContentText::text(kind.rawValue()),
          .title = title,
          .count = texts.number(media.count),
          .size = size,
          .accessibleName =
              texts.joined({title, ContentText::counted("1 file", "%lld files", media.count, texts), size}, u", "_qs),
          .included = state.includedKinds.contains(kind)};
}

QString spaceStatus(std::optional<bool> hasEnoughSpace, const L10n& texts) {
  if (!hasEnoughSpace) return {};
  return *hasEnoughSpace ? texts.text(u"Enough"_qs) : texts.text(u"Not enough — choose another disk"_qs);
}

// How much the chosen days leave of it is not known before it is copied.
QString needOf(const ExportState& state, const L10n& texts) {
  const QString size = texts.byteCount(state.selectedBytes());
  return state.chatChoice.hasDays() ? texts.format(u"Up to %@"_qs, {size}) : size;
}

}  // namespace

DestinationContent DestinationContent::of(const ExportState& state, const L10n& texts) {
  const std::optional<bool> hasEnoughSpace = state.hasEnoughSpace();
  return {.isChosen = state.destinationURL.has_value(),
          .path = state.destinationURL ? texts.path(ContentText::path(*state.destinationURL)) : QString(),
          .willCopy = needOf(state, texts),
          .freeSpace = state.availableBytes ? texts.byteCount(*state.availableBytes) : QString(),
          .status = spaceStatus(hasEnoughSpace, texts),
          .isEnough = hasEnoughSpace.value_or(true)};
}

OptionsStepContent OptionsStepContent::of(const ExportState& state, const L10n& texts) {
  static const BackupInfo noBackup;
  static const ScanResult noScan;
  const BackupInfo& info = state.backupInfo ? *state.backupInfo : noBackup;
  const ScanResult& scan = state.scanResult ? *state.scanResult : noScan;
  OptionsStepContent content{
      .device = info.deviceName ? ContentText::text(*info.deviceName) : texts.text(u"iPhone"_qs),
      .backedUp = info.backupDate ? texts.dateAndTime(*info.backupDate) : texts.text(u"Unknown"_qs),
      .chats = texts.number(scan.chatCount),
      .media = mediaLine(scan, texts),
      .isEmpty = state.scanResult && scan.chatCount == 0 && scan.mediaFileCount == 0,
      .exportTranscripts = state.exportTranscripts,
      .exportMessageFiles = state.exportTranscripts && state.exportMessageFiles,
      .chatChoice = ChatChoiceContent::of(state, texts),
      .destination = DestinationContent::of(state, texts)};
  for (const std::string& warning : scan.warnings) content.warnings.append(texts.text(ContentText::text(warning)));
  for (const MediaKind kind : MediaKind::allCases) content.kinds.append(kindContent(kind, state, texts));
  return content;
}
