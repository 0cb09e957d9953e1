#include "Tests/Application/Gallery/ScreenFaults.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <functional>
#include <vector>

namespace {

// A text or a symbol, where it is seen.
struct Mark {
  QString name;
  QRectF place;             // in the window
  const QQuickItem* panel;  // the popup that it stands in; null in the window itself
};

constexpr double tolerance = 1;  // pixels; letters reach a little beyond what is measured

bool isText(const QQuickItem& item) {
  return item.inherits("QQuickText") && !item.property("text").toString().isEmpty();
}

bool isSymbol(const QQuickItem& item) {
  return item.inherits("QQuickImage") && !item.property("source").toString().isEmpty();
}

QString nameOf(const QQuickItem& item) {
  const char* property = isText(item) ? "text" : "source";
  return u"“%1”"_qs.arg(item.property(property).toString().left(60));
}

// Where the letters of a text are, within its item.
QRectF lettersOf(const QQuickItem& text) {
  const double width = text.property("contentWidth").toDouble();
  const double height = text.property("contentHeight").toDouble();
  const int horizontal = text.property("effectiveHorizontalAlignment").toInt();
  const int vertical = text.property("verticalAlignment").toInt();
  const double x = horizontal == Qt::AlignHCenter ? 0.5 : horizontal == Qt::AlignRight ? 1 : 0;
  const double y = vertical == Qt::AlignVCenter ? 0.5 : vertical == Qt::AlignBottom ? 1 : 0;
  return {(text.width() - width) * x, (text.height() - height) * y, width, height};
}

QRectF seenOf(const QQuickItem& item) {
  const QRectF own = isText(item) ? lettersOf(item) : QRectF(0, 0, item.width(), item.height());
  QRectF seen = item.mapRectToScene(own);
  for (const QQuickItem* around = item.parentItem(); around != nullptr; around = around->parentItem()) {
    if (around->clip()) seen &= around->mapRectToScene(QRectF(0, 0, around->width(), around->height()));
  }
  return seen;
}

const QQuickItem* panelOf(const QQuickItem& item) {
  const QQuickItem* around = &item;
  while (around != nullptr && !around->inherits("QQuickPopupItem")) around = around->parentItem();
  return around;
}

void walk(const QQuickItem* item, const std::function<void(const QQuickItem&)>& visit) {
  if (!item->isVisible() || item->opacity() == 0) return;
  visit(*item);
  for (const QQuickItem* child : item->childItems()) walk(child, visit);
}

std::vector<Mark> marksOf(const QQuickWindow& window) {
  std::vector<Mark> marks;
  walk(window.contentItem(), [&](const QQuickItem& item) {
    if (!isText(item) && !isSymbol(item)) return;
    const QRectF place = seenOf(item);
    if (!place.isEmpty()) marks.push_back({.name = nameOf(item), .place = place, .panel = panelOf(item)});
  });
  return marks;
}

bool overlap(const Mark& one, const Mark& other) {
  const QRectF shared = one.place & other.place;
  return one.panel == other.panel && shared.width() > tolerance && shared.height() > tolerance;
}

QStringList overlaps(const std::vector<Mark>& marks) {
  QStringList faults;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (overlap(marks[i], marks[j])) faults.append(marks[j].name + u" lies under "_qs + marks[i].name);
    }
  }
  return faults;
}

bool isCut(const QQuickItem& text) {
  const bool saysSo = text.property("truncated").toBool();
  const bool isTooWide = text.property("contentWidth").toDouble() > text.width() + tolerance;
  const bool isTooHigh = text.property("contentHeight").toDouble() > text.height() + tolerance;
  return isTooHigh || (isTooWide && !saysSo);
}

QStringList cutTexts(const QQuickWindow& window) {
  QStringList faults;
  walk(window.contentItem(), [&](const QQuickItem& item) {
    if (isText(item) && isCut(item)) faults.append(nameOf(item) + u" does not fit into its place"_qs);
  });
  return faults;
}

QStringList marksOutside(const QQuickWindow& window, const std::vector<Mark>& marks) {
  QStringList faults;
  const QRectF inside(-tolerance, -tolerance, window.width() + 2 * tolerance, window.height() + 2 * tolerance);
  for (const Mark& mark : marks) {
    if (!inside.contains(mark.place)) faults.append(mark.name + u" reaches out of the window"_qs);
  }
  return faults;
}

}  // namespace

QStringList screenFaults(const QQuickWindow& window) {
  const std::vector<Mark> marks = marksOf(window);
  return overlaps(marks) + cutTexts(window) + marksOutside(window, marks);
}
