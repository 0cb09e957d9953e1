#pragma once

#include <QString>
#include <ostream>

#include "Tidewell/Services/L10n.h"

// English as in the United States, at Greenwich.
inline L10n americanTexts(StringTable table = {}) {
  return L10n(std::move(table), {.identifier = "en_US"}, {.identifier = "UTC"});
}

// 2023-03-05T14:22:00Z.
inline const Date someDate = dateFromUnixTime(1'678'026'120);
inline const QString someDateText = QStringLiteral("Mar 5, 2023, 2:22\u202FPM");

// Names that people have given to phones, chats and folders.
inline const QStringList unusualNames{
    QStringLiteral("هاتف ليلى"),  QStringLiteral("\u202Eevil\u202C"), QStringLiteral("👩🏽‍💻 📱 🇧🇷"),
    QStringLiteral("%@ %lld %1"), QStringLiteral("<b>a</b> & \"b\""), QString(10'000, u'x')};
