#include "Tidewell/Services/StringTable.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <optional>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

// "pt-Latn-BR", "pt-Latn", "pt".
QStringList fromParticularToGeneral(const QString& language) {
  QStringList names;
  for (QString name = language; !name.isEmpty(); name.truncate(name.lastIndexOf(QLatin1Char('-')))) {
    names.append(name);
    if (!name.contains(QLatin1Char('-'))) break;
  }
  return names;
}

std::optional<std::filesystem::path> tableFile(const std::filesystem::path& bundle, const QStringList& languages) {
  for (const QString& language : languages) {
    for (const QString& name : fromParticularToGeneral(language)) {
      std::filesystem::path file = bundle / PathText::path(name.toStdString() + ".json");
      if (Files::isRegularFile(file)) return file;
    }
  }
  return std::nullopt;
}

// What is not translated yet is left out.
QHash<QString, QString> readTable(const std::filesystem::path& path) {
  QHash<QString, QString> translations;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return translations;
  const QJsonObject table = QJsonDocument::fromJson(file.readAll()).object();
  for (auto entry = table.begin(); entry != table.end(); ++entry) {
    const QString translation = entry.value().toString();
    if (!translation.isEmpty()) translations.insert(entry.key(), translation);
  }
  return translations;
}

}  // namespace

StringTable StringTable::load(const std::filesystem::path& bundle, const QStringList& languages) {
  const std::optional<std::filesystem::path> file = tableFile(bundle, languages);
  return file ? StringTable(readTable(*file), QString::fromStdString(file->stem().string())) : StringTable();
}
