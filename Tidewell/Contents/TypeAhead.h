#pragma once

#include <QStringList>

// Which of a list's entries typed letters mean.
namespace TypeAhead {

// The next entry from `current` on whose name begins with `typed`, whatever the case, and
// from the top again after the last one; -1 without one. The entry at `current` (-1: none)
// counts too, but for a single letter, typed once or again and again: that goes on to the next.
qsizetype find(const QStringList& names, const QString& typed, qsizetype current);

}  // namespace TypeAhead
