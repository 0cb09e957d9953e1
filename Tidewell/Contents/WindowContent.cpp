#include "Tidewell/Contents/WindowContent.h"

#include "Tidewell/Contents/ContentText.h"

namespace {

QString caption(WizardStep step, const L10n& texts) {
  switch (step) {
    case WizardStep::backup:
      return texts.text(u"Step 1 of 3 — Choose a backup"_qs);
    case WizardStep::options:
      return texts.text(u"Step 2 of 3 — Choose what to export"_qs);
    case WizardStep::exporting:
      return texts.text(u"Step 3 of 3 — Exporting"_qs);
    case WizardStep::done:
      return texts.text(u"Done"_qs);
  }
  Q_UNREACHABLE();
}

QString busyLine(const ExportState& state, const L10n& texts) {
  if (state.isInspecting()) return texts.text(u"Reading this backup…"_qs);
  if (state.isScanning()) return texts.text(u"Reading chats…"_qs);
  // The first time the step itself says it.
  if (state.isRefreshingLibrary && state.hasReadLibrary && state.library.backups.empty() && !state.backupInfo)
    return texts.text(u"Looking for iPhone backups…"_qs);
  return {};
}

QString alertText(const ExportState& state) {
  if (!state.errorMessage) return {};
  QStringList paragraphs;
  for (const auto& paragraph : {state.errorMessage, state.recoverySuggestion}) {
    if (paragraph) paragraphs.append(ContentText::text(Text::repaired(*paragraph)));
  }
  return paragraphs.join(u"\n\n"_qs);
}

}  // namespace

WindowContent WindowContent::of(const ExportState& state, const L10n& texts) {
  const auto hint = state.startExportHint();
  const auto continueHint = state.continueHint();
  return {.step = static_cast<int>(state.step),
          .stepCaption = caption(state.step, texts),
          .busyText = busyLine(state, texts),
          .hint = hint ? texts.text(ContentText::text(*hint)) : QString(),
          .continueHint = continueHint ? texts.text(ContentText::text(*continueHint)) : QString(),
          .hintOpensFolderPicker = state.startExportHintOpensFolderPicker(),
          .canContinue = state.canContinueFromBackup(),
          .canExport = state.canExport(),
          .isUnlocking = state.isUnlocking(),
          .isCancellingUnlock = state.isCancellingUnlock(),
          .dropTargeted = state.dropTargeted,
          .canOpenArchive = state.summary && state.summary->archiveIndexURL,
          .hasError = state.errorMessage.has_value(),
          .errorText = alertText(state),
          .offersSamePerson = state.offersSamePerson(),
          .asksToStop = state.stopQuestion != StopQuestion::none,
          .unopenedPath = state.unopenedPath ? ContentText::path(*state.unopenedPath) : QString()};
}
