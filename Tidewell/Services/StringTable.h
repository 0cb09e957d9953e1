#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <filesystem>

// The application's texts in one language, by their English text.
class StringTable {
 public:
  // English only.
  StringTable() = default;
  explicit StringTable(QHash<QString, QString> translations, QString language = QStringLiteral("en"))
      : translations_(std::move(translations)), language_(std::move(language)) {}

  // The table of the first of `languages` that the bundle speaks, else English. A
  // language is also spoken by its more general name: "pt-BR" by "pt". A damaged
  // table counts as empty.
  static StringTable load(const std::filesystem::path& bundle, const QStringList& languages);

  QString text(const QString& english) const { return translations_.value(english, english); }
  // In BCP 47: "pt-BR".
  const QString& language() const { return language_; }

 private:
  QHash<QString, QString> translations_;
  QString language_ = QStringLiteral("en");
};
