#pragma once

#include <QStringList>

class QQuickWindow;

// What nobody should see in a window, a line for each: texts and symbols that lie over one
// another or reach out of it, and texts that do not fit into their place without an ellipsis.
QStringList screenFaults(const QQuickWindow& window);
