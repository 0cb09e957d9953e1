#include "Tidewell/Services/L10n.h"

#include <QRegularExpression>
#include <utility>

#include "TidewellCore/ReadableSize.h"

namespace {

constexpr QChar leftToRightIsolate(0x2066);
constexpr QChar rightToLeftIsolate(0x2067);
constexpr QChar firstStrongIsolate(0x2068);
constexpr QChar popIsolate(0x2069);

bool runsRightToLeft(const QString& language) { return QLocale(language).textDirection() == Qt::RightToLeft; }

// The value that a placeholder asks for; -1 when it goes by its turn.
qsizetype namedPlace(const QRegularExpressionMatch& placeholder) {
  return placeholder.captured(1).isEmpty() ? -1 : placeholder.captured(1).toLongLong() - 1;
}

QString filled(const QString& text, const QStringList& values) {
  static const QRegularExpression pattern(QStringLiteral("%(?:([1-9]\\d?)\\$)?(?:@|lld)"));
  QString result;
  qsizetype copied = 0;
  qsizetype next = 0;
  for (auto matches = pattern.globalMatch(text); matches.hasNext();) {
    const QRegularExpressionMatch placeholder = matches.next();
    const qsizetype named = namedPlace(placeholder);
    const qsizetype place = named < 0 ? next++ : named;
    result += QStringView(text).mid(copied, placeholder.capturedStart() - copied);
    result += place < values.size() ? values[place] : placeholder.captured();
    copied = placeholder.capturedEnd();
  }
  result += QStringView(text).mid(copied);
  return result;
}

}  // namespace

L10n::L10n(StringTable table, const Locale& locale, const TimeZone& timeZone)
    : table_(std::move(table)),
      locale_(locale),
      numbers_(QString::fromStdString(locale.identifier)),
      isolates_(numbers_.textDirection() == Qt::RightToLeft || speaksRightToLeft()),
      dates_(std::make_shared<DateFormatter>(DateFormatter::abbreviatedDateAndShortTime(timeZone, locale))) {}

QString L10n::text(const QString& english) const { return table_.text(english); }

QString L10n::format(const QString& english, const QStringList& values) const {
  QStringList inserted;
  for (const QString& value : values) inserted.append(isolated(value, firstStrongIsolate));
  return filled(text(english), inserted);
}

QString L10n::joined(const QStringList& pieces, const QString& separator) const {
  QStringList isolatedPieces;
  for (const QString& piece : pieces) isolatedPieces.append(isolated(piece, firstStrongIsolate));
  const QString line = isolatedPieces.join(separator);
  // Where the pieces stand in the order of the language, whatever they are made of.
  return speaksRightToLeft() ? isolated(line, rightToLeftIsolate) : line;
}

QString L10n::path(const QString& path) const { return isolated(path, leftToRightIsolate); }

QString L10n::isolated(const QString& value, QChar opening) const {
  return isolates_ && !value.isEmpty() ? opening + value + popIsolate : value;
}

bool L10n::speaksRightToLeft() const { return runsRightToLeft(table_.language()); }

QString L10n::withoutIsolates(QString text) {
  text.removeIf([](QChar letter) { return letter >= leftToRightIsolate && letter <= popIsolate; });
  return text;
}

QString L10n::number(std::int64_t value) const { return numbers_.toString(static_cast<qlonglong>(value)); }

QString L10n::byteCount(std::int64_t bytes) const {
  const auto [amount, decimals, unit] = ReadableSize::of(bytes);
  if (bytes == 1) return text(QStringLiteral("1 byte"));
  if (decimals == 0) return format(QStringLiteral("%lld bytes"), {number(bytes)});
  const QLatin1String name(unit.data(), static_cast<qsizetype>(unit.size()));
  return isolated(numbers_.toString(amount, 'f', decimals) + QLatin1Char(' ') + name, leftToRightIsolate);
}

QString L10n::dateAndTime(Date date) const { return QString::fromStdString(dates_->string(date)); }

TranscriptStyleBridge L10n::transcriptStyle() const {
  if (locale_.languageCode() == "pt") return TranscriptStyle::portuguese();
  return {.youLabel = text(QStringLiteral("You")).toStdString(),
          .unknownSenderLabel = text(QStringLiteral("Unknown")).toStdString(),
          .languageCode = TranscriptStyle::english().languageCode};
}
