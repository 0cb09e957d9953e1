#include "Tidewell/Contents/DoneStepContent.h"

#include "Tidewell/Contents/ContentText.h"

namespace {

QString summaryLine(const ExportSummary& summary, const L10n& texts) {
  QString line = texts.format(u"%lld copied · %lld already present · %lld transcripts · %lld failed"_qs,
                              {texts.number(summary.copiedCount), texts.number(summary.skippedExistingCount),
                               texts.number(summary.transcriptCount), texts.number(summary.failedCount)});
  if (summary.unresolvedArchiveLinkCount > 0) {
    line += texts.format(u" · %lld archive links missing files"_qs, {texts.number(summary.unresolvedArchiveLinkCount)});
  }
  return line;
}

}  // namespace

DoneStepContent DoneStepContent::of(const ExportState& state, const L10n& texts) {
  if (!state.summary) return {};
  return {.destination = ContentText::path(state.summary->destination),
          .summary = summaryLine(*state.summary, texts),
          .hasFailures = state.summary->failedCount > 0};
}
