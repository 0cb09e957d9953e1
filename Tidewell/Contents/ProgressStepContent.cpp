#include "Tidewell/Contents/ProgressStepContent.h"

#include "Tidewell/Contents/ContentText.h"

namespace {

using Phase = ExportProgress::Phase;

QString titleOf(const std::optional<ExportProgress>& progress, const L10n& texts) {
  if (!progress) return texts.text(u"Starting…"_qs);
  return texts.text(ContentText::text(ExportProgress::title(progress->phase)));
}

QString remainingText(const TimeLeft& time, const L10n& texts) {
  const ExportTiming::Words& words = ExportTiming::words(time.unit);
  return ContentText::counted(words.one, words.many, time.count, texts);
}

// Said of each quarter once, since it changes with nothing else.
QString announcementOf(const ExportProgress& progress, const L10n& texts) {
  const auto quarters = static_cast<std::int64_t>(progress.fraction() * 4);
  if (quarters == 0) return {};
  const QString title = texts.text(ContentText::text(ExportProgress::title(progress.phase)));
  return texts.format(u"%@, %lld%"_qs, {title, texts.number(quarters * 25)});
}

}  // namespace

ProgressStepContent ProgressStepContent::of(const ExportState& state, const L10n& texts, Date now) {
  ProgressStepContent content{.title = titleOf(state.progress, texts)};
  if (!state.progress) return content;
  const ExportProgress& progress = *state.progress;
  content.isIndeterminate = progress.isIndeterminate();
  const bool isFinished = progress.phase == Phase::finished;
  content.fraction = isFinished ? 1 : progress.fraction();
  if (!content.isIndeterminate && !isFinished) {
    content.announcement = announcementOf(progress, texts);
    content.count = texts.format(u"%lld of %lld"_qs, {texts.number(progress.completed), texts.number(progress.total)});
  }
  content.fileName = ContentText::text(Text::repaired(progress.currentFileName));
  // The title says already what the unlocking calls its file.
  if (content.isIndeterminate) content.fileName.clear();
  if (const auto time = state.timeLeft(now)) content.remaining = remainingText(*time, texts);
  return content;
}
