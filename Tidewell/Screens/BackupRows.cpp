#include "Tidewell/Screens/BackupRows.h"

#include <algorithm>
#include <ranges>

#include "Tidewell/Contents/TypeAhead.h"

namespace {

constexpr int backupRole = Qt::UserRole;

bool areSame(const BackupRowContent& one, const BackupRowContent& other) { return one.id == other.id; }

qsizetype sharedAtStart(const QList<BackupRowContent>& before, const QList<BackupRowContent>& after) {
  return std::ranges::mismatch(before, after, areSame).in1 - before.begin();
}

qsizetype sharedAtEnd(const QList<BackupRowContent>& before, const QList<BackupRowContent>& after, qsizetype most) {
  qsizetype shared = 0;
  while (shared < most && areSame(before[before.size() - 1 - shared], after[after.size() - 1 - shared])) ++shared;
  return shared;
}

}  // namespace

void BackupRows::show(const QList<BackupRowContent>& rows) {
  const qsizetype start = sharedAtStart(rows_, rows);
  const qsizetype end = sharedAtEnd(rows_, rows, std::min(rows_.size(), rows.size()) - start);
  takeAway(start, rows_.size() - start - end);
  insert(start, rows.sliced(start, rows.size() - start - end));
  update(rows);
}

void BackupRows::takeAway(qsizetype first, qsizetype count) {
  if (count == 0) return;
  beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
  rows_.remove(first, count);
  endRemoveRows();
}

void BackupRows::insert(qsizetype first, const QList<BackupRowContent>& rows) {
  if (rows.isEmpty()) return;
  beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + rows.size() - 1));
  for (const BackupRowContent& row : std::views::reverse(rows)) rows_.insert(first, row);
  endInsertRows();
}

void BackupRows::update(const QList<BackupRowContent>& rows) {
  for (qsizetype i = 0; i < rows.size(); ++i) {
    if (rows_[i] == rows[i]) continue;
    rows_[i] = rows[i];
    const QModelIndex changed = index(static_cast<int>(i));
    emit dataChanged(changed, changed);
  }
}

int BackupRows::rowNamed(const QString& typed, int current) const {
  QStringList names;
  for (const BackupRowContent& row : rows_) names.append(row.name);
  return static_cast<int>(TypeAhead::find(names, typed, current));
}

QString BackupRows::idOf(int row) const { return row < 0 || row >= rows_.size() ? QString() : rows_[row].id; }

int BackupRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant BackupRows::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || role != backupRole) return {};
  return QVariant::fromValue(rows_[index.row()]);
}

QHash<int, QByteArray> BackupRows::roleNames() const { return {{backupRole, "backup"}}; }
