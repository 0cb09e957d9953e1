#include "Tidewell/Contents/DoneStepContent.h"

#include <algorithm>

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

QString headlineOf(const ExportSummary& summary, const L10n& texts) {
  const auto most = CopyFailures::headline(summary.failures);
  if (!most) return {};
  const CopyFailures::Words& words = CopyFailures::words(most->reason);
  return ContentText::counted(words.one, words.many, most->count, texts);
}

// Names were given by other people: one line each, whatever they hold.
QString line(const std::string& text) { return ContentText::text(Text::repaired(text)).simplified(); }

FailureContent failureContent(const CopyFailure& failure, const L10n& texts) {
  return {.name = line(failure.name),
          .chat = line(failure.chat),
          .reason = texts.text(ContentText::text(CopyFailures::words(failure.reason).sentence))};
}

void addFailures(DoneStepContent& content, const std::vector<CopyFailure>& failures, const L10n& texts) {
  const auto count = static_cast<qsizetype>(failures.size());
  const qsizetype shown = std::min(count, DoneStepContent::mostFailures);
  QStringList lines;
  for (qsizetype i = 0; i < shown; ++i) {
    const FailureContent failure = failureContent(failures[static_cast<std::size_t>(i)], texts);
    content.failures.append(failure);
    lines.append(u"%1\t%2\t%3"_qs.arg(failure.name, failure.chat, failure.reason));
  }
  if (count > shown) content.moreFailures = texts.format(u"and %lld more"_qs, {texts.number(count - shown)});
  if (count > shown) lines.append(L10n::withoutIsolates(content.moreFailures));
  content.failureList = lines.join(u'\n');
}

}  // namespace

DoneStepContent DoneStepContent::of(const ExportState& state, const L10n& texts) {
  if (!state.summary) return {};
  const ExportSummary& summary = *state.summary;
  DoneStepContent content{.destination = texts.path(ContentText::path(summary.destination)),
                          .summary = summaryLine(summary, texts),
                          .hasFailures = summary.failedCount > 0,
                          .hasArchive = summary.archiveIndexURL.has_value(),
                          .canTryAgain = state.canExport(),
                          .headline = headlineOf(summary, texts)};
  addFailures(content, summary.failures, texts);
  for (const std::string& warning : summary.warnings) content.warnings.append(texts.text(ContentText::text(warning)));
  return content;
}
