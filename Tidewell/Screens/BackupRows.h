#pragma once

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <QList>

#include "Tidewell/Contents/BackupStepContent.h"

// The list of backups as views want it: told of what has changed alone, so that the rows
// of a long list are made when they are seen, and kept while they stay.
class BackupRows : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")

 public:
  void show(const QList<BackupRowContent>& rows);

  // The row that those letters mean when they are typed at `current`; -1 without one.
  Q_INVOKABLE int rowNamed(const QString& typed, int current) const;
  Q_INVOKABLE QString idOf(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  // The one role, "backup", holds a BackupRowContent.
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  void takeAway(qsizetype first, qsizetype count);
  void insert(qsizetype first, const QList<BackupRowContent>& rows);
  void update(const QList<BackupRowContent>& rows);

  QList<BackupRowContent> rows_;
};
