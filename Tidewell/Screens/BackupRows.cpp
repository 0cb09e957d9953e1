#include "Tidewell/Screens/BackupRows.h"

#include "Tidewell/Contents/TypeAhead.h"

int BackupRows::rowNamed(const QString& typed, int current) const {
  QStringList names;
  for (const BackupRowContent& row : rows()) names.append(row.name);
  return static_cast<int>(TypeAhead::find(names, typed, current));
}

QString BackupRows::idOf(int row) const { return row < 0 || row >= rows().size() ? QString() : rows()[row].id; }
