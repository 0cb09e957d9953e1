#include "Tidewell/Screens/Backdrop.h"

#include <vector>

#include "Tidewell/Screens/ItemAccess.h"

namespace {

// What Qt would find below that item: what it ignores is passed through.
void collect(const QQuickItem& item, std::vector<QAccessibleInterface*>& found) {
  for (QQuickItem* child : item.childItems()) {
    if (QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(child)) {
      found.push_back(interface);
    } else {
      collect(*child, found);
    }
  }
}

class AccessibleBackdrop : public ItemAccess {
 public:
  explicit AccessibleBackdrop(Backdrop* item) : ItemAccess(item) {}

  QAccessibleInterface* child(int index) const override {
    const auto all = children();
    return index < 0 || index >= std::ssize(all) ? nullptr : all[static_cast<std::size_t>(index)];
  }
  int childCount() const override { return static_cast<int>(children().size()); }
  int indexOfChild(const QAccessibleInterface* wanted) const override {
    const auto all = children();
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i]->object() == wanted->object()) return static_cast<int>(i);
    }
    return -1;
  }
  QAccessibleInterface* childAt(int x, int y) const override {
    const auto all = children();
    for (auto child = all.rbegin(); child != all.rend(); ++child) {
      if ((*child)->state().invisible || !(*child)->rect().contains(x, y)) continue;
      QAccessibleInterface* deeper = (*child)->childAt(x, y);
      return deeper == nullptr ? *child : deeper;
    }
    return nullptr;
  }
  QAccessible::Role role() const override { return QAccessible::Client; }
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Name && !backdrop().isCovered() ? backdrop().caption() : QString();
  }

 private:
  Backdrop& backdrop() const { return *static_cast<Backdrop*>(object()); }
  std::vector<QAccessibleInterface*> children() const {
    std::vector<QAccessibleInterface*> found;
    if (!backdrop().isCovered()) collect(item(), found);
    return found;
  }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* backdrop = qobject_cast<Backdrop*>(object);
  return backdrop == nullptr ? nullptr : new AccessibleBackdrop(backdrop);
}

}  // namespace

Backdrop::Backdrop(QQuickItem* parent) : QQuickItem(parent) {
  [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(makeInterface), true);
}
