#pragma once

#include <QAbstractListModel>
#include <QList>
#include <algorithm>
#include <ranges>

// Rows as views want them: told of what has changed alone, so that the rows of a long list are made when they are
// seen, and kept while they stay. A row is known by its `id`.
template <typename Row>
class RowsModel : public QAbstractListModel {
 public:
  // The name of the one role, which holds a row.
  explicit RowsModel(const char* role) : role_(role) {}

  void show(const QList<Row>& rows) {
    const qsizetype start = sharedAtStart(rows);
    const qsizetype end = sharedAtEnd(rows, std::min(rows_.size(), rows.size()) - start);
    takeAway(start, rows_.size() - start - end);
    insert(start, rows.sliced(start, rows.size() - start - end));
    update(rows);
  }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (!index.isValid() || role != Qt::UserRole) return {};
    return QVariant::fromValue(rows_[index.row()]);
  }
  QHash<int, QByteArray> roleNames() const override { return {{Qt::UserRole, role_}}; }

 protected:
  const QList<Row>& rows() const { return rows_; }

 private:
  static bool areSame(const Row& one, const Row& other) { return one.id == other.id; }

  qsizetype sharedAtStart(const QList<Row>& after) const {
    return std::ranges::mismatch(rows_, after, areSame).in1 - rows_.begin();
  }

  qsizetype sharedAtEnd(const QList<Row>& after, qsizetype most) const {
    qsizetype shared = 0;
    while (shared < most && areSame(rows_[rows_.size() - 1 - shared], after[after.size() - 1 - shared])) ++shared;
    return shared;
  }

  void takeAway(qsizetype first, qsizetype count) {
    if (count == 0) return;
    beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
    rows_.remove(first, count);
    endRemoveRows();
  }

  void insert(qsizetype first, const QList<Row>& rows) {
    if (rows.isEmpty()) return;
    beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + rows.size() - 1));
    for (const Row& row : std::views::reverse(rows)) rows_.insert(first, row);
    endInsertRows();
  }

  void update(const QList<Row>& rows) {
    for (qsizetype i = 0; i < rows.size(); ++i) {
      if (rows_[i] == rows[i]) continue;
      rows_[i] = rows[i];
      const QModelIndex changed = index(static_cast<int>(i));
      emit dataChanged(changed, changed);
    }
  }

  const QByteArray role_;
  QList<Row> rows_;
};
