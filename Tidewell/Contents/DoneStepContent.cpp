#include "Tidewell/Contents/DoneStepContent.h"

#include <ranges>
#include <utility>

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

// How many rows of a list are not shown; empty when all are.
QString moreThan(std::size_t count, const L10n& texts) {
  const auto hidden = static_cast<qsizetype>(count) - DoneStepContent::mostRows;
  return hidden > 0 ? texts.format(u"and %lld more"_qs, {texts.number(hidden)}) : QString();
}

// The lines of a list and how many more there are, to be copied.
QString copied(QStringList lines, const QString& more) {
  if (!more.isEmpty()) lines.append(L10n::withoutIsolates(more));
  return lines.join(u'\n');
}

void addFailures(DoneStepContent& content, const std::vector<CopyFailure>& failures, const L10n& texts) {
  QStringList lines;
  for (const CopyFailure& each : failures | std::views::take(DoneStepContent::mostRows)) {
    const FailureContent failure = failureContent(each, texts);
    content.failures.append(failure);
    lines.append(u"%1\t%2\t%3"_qs.arg(failure.name, failure.chat, failure.reason));
  }
  content.moreFailures = moreThan(failures.size(), texts);
  content.failureList = copied(std::move(lines), content.moreFailures);
}

QString verdictOf(const VerifySummary& verification, const L10n& texts) {
  if (!verification.findings.empty()) {
    return ContentText::counted("1 problem was found", "%lld problems were found", std::ssize(verification.findings),
                                texts);
  }
  return texts.format(u"Nothing is wrong: %@ · %@ · %@"_qs,
                      {ContentText::counted("1 media file", "%lld media files", verification.mediaCount, texts),
                       ContentText::counted("1 chat", "%lld chats", verification.chatCount, texts),
                       ContentText::counted("1 message", "%lld messages", verification.messageCount, texts)});
}

void addFindings(DoneStepContent& content, const VerifySummary& verification, const L10n& texts) {
  content.verdict = verdictOf(verification, texts);
  for (const VerifySummary::Finding& finding : verification.findings | std::views::take(DoneStepContent::mostRows)) {
    content.findings.append(line(finding.message));
  }
  content.moreFindings = moreThan(verification.findings.size(), texts);
  content.findingList = copied(content.findings, content.moreFindings);
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
                          .headline = headlineOf(summary, texts),
                          .canVerify = state.canVerify(),
                          .isVerifying = state.isVerifying()};
  addFailures(content, summary.failures, texts);
  for (const std::string& warning : summary.warnings) content.warnings.append(texts.text(ContentText::text(warning)));
  if (state.verification) addFindings(content, *state.verification, texts);
  return content;
}
