#include "Tidewell/Contents/ChatChoiceContent.h"

#include <algorithm>

#include "Tidewell/Contents/ContentText.h"

namespace {

ChatRowContent rowOf(const ScanChat& chat, const ExportState& state, const L10n& texts) {
  const QString name = ContentText::text(Text::repaired(chat.name));
  const QString messages = ContentText::counted("1 message", "%lld messages", chat.messageCount, texts);
  const QString bytes = texts.byteCount(chat.mediaBytes);
  return {.id = ContentText::text(chat.jid),
          .name = name,
          .size = texts.joined({messages, bytes}, u" · "_qs),
          .accessibleName = texts.joined({name, messages, bytes}, u", "_qs),
          .included = state.chatChoice.has(chat)};
}

QString countLine(std::int64_t chosen, std::int64_t all, const L10n& texts) {
  if (all == 0) return {};
  if (chosen == all) return texts.format(u"All %lld"_qs, {texts.number(all)});
  return texts.format(u"%lld of %lld"_qs, {texts.number(chosen), texts.number(all)});
}

}  // namespace

QList<ChatRowContent> ChatRowContent::listOf(const ExportState& state, const L10n& texts) {
  QList<ChatRowContent> rows;
  if (!state.scanResult || !state.chatChoice.isListShown) return rows;
  for (const ScanChat& chat : state.scanResult->chats) {
    if (state.chatChoice.fitsSearch(chat)) rows.append(rowOf(chat, state, texts));
  }
  return rows;
}

ChatChoiceContent ChatChoiceContent::of(const ExportState& state, const L10n& texts) {
  static const ScanResult noScan;
  const ScanResult& scan = state.scanResult ? *state.scanResult : noScan;
  const ChatChoice& choice = state.chatChoice;
  const auto fault = choice.fault();
  const auto fits = [&](const ScanChat& chat) { return choice.fitsSearch(chat); };
  return {.chats = countLine(choice.count(scan), static_cast<std::int64_t>(scan.chats.size()), texts),
          .size = texts.byteCount(state.selectedBytes()),
          .fault = fault ? texts.text(ContentText::text(*fault)) : QString(),
          .firstDay = ContentText::text(choice.since),
          .lastDay = ContentText::text(choice.until),
          .canChoose = !scan.chats.empty(),
          .isListShown = choice.isListShown,
          .foundNone = choice.isListShown && std::ranges::none_of(scan.chats, fits)};
}
