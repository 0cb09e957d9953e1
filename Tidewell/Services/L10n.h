#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>

#include "Tidewell/Services/StringTable.h"
#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/TranscriptStyle.h"

// The wording that the application hands to the core for its transcripts.
using TranscriptStyleBridge = TranscriptStyle;

// How the application speaks: its texts in the user's language, and numbers,
// sizes and dates as the user's region writes them. A value; its copies share what
// writes dates, so that all of them belong to one thread.
//
// Where the language or the region writes from right to left, what is put into a text stands
// within Unicode's isolates: else figures and units, pieces and names would change places.
class L10n {
 public:
  L10n(StringTable table, const Locale& locale, const TimeZone& timeZone);

  // The translation, or the English text itself.
  QString text(const QString& english) const;
  // The same, its placeholders "%@" and "%lld" filled from first to last. A
  // translation may name a value by its place instead: "%2$@". A placeholder
  // without a value stays.
  QString format(const QString& english, const QStringList& values) const;
  // The pieces one after another: "iOS 17.4 · 48.2 GB".
  QString joined(const QStringList& pieces, const QString& separator) const;
  // A path within texts, its folders from left to right.
  QString path(const QString& path) const;

  QString number(std::int64_t value) const;
  // "3 bytes", "1.2 GB": decimal units, as file managers show them.
  QString byteCount(std::int64_t bytes) const;
  // Abbreviated date and shortened time: "Mar 5, 2023, 2:22 PM".
  QString dateAndTime(Date date) const;

  // Portuguese for every locale of that language, else the table's own words.
  TranscriptStyleBridge transcriptStyle() const;

  // Whether the texts themselves, and so the window, run from right to left.
  bool speaksRightToLeft() const;
  // Of what is shown, that which may be copied: without what only orders it for the eye.
  static QString withoutIsolates(QString text);

 private:
  QString isolated(const QString& value, QChar opening) const;

  StringTable table_;
  Locale locale_;
  QLocale numbers_;
  bool isolates_;
  std::shared_ptr<const DateFormatter> dates_;
};
