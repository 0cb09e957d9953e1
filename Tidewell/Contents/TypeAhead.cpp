#include "Tidewell/Contents/TypeAhead.h"

#include <algorithm>

qsizetype TypeAhead::find(const QStringList& names, const QString& typed, qsizetype current) {
  if (typed.isEmpty() || names.isEmpty()) return -1;
  const bool isOneLetter = std::ranges::all_of(typed, [&](QChar letter) { return letter == typed.front(); });
  const QString wanted = isOneLetter ? typed.left(1) : typed;
  const qsizetype first = isOneLetter ? current + 1 : std::max<qsizetype>(current, 0);
  for (qsizetype i = 0; i < names.size(); ++i) {
    const qsizetype index = (first + i) % names.size();
    if (names[index].startsWith(wanted, Qt::CaseInsensitive)) return index;
  }
  return -1;
}
