#pragma once

#include <QtQml/qqmlregistration.h>

#include "Tidewell/Contents/BackupStepContent.h"
#include "Tidewell/Screens/RowsModel.h"

// The list of backups.
class BackupRows : public RowsModel<BackupRowContent> {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")

 public:
  BackupRows() : RowsModel("backup") {}

  // The row that those letters mean when they are typed at `current`; -1 without one.
  Q_INVOKABLE int rowNamed(const QString& typed, int current) const;
  Q_INVOKABLE QString idOf(int row) const;
};
