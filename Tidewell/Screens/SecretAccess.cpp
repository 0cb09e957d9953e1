#include "Tidewell/Screens/SecretAccess.h"

#include <algorithm>
#include <utility>

#include "Tidewell/Screens/ItemAccess.h"

namespace {

constexpr char nameProperty[] = "secretName";

class AccessibleSecret : public ItemAccess, public QAccessibleTextInterface, public QAccessibleActionInterface {
 public:
  using ItemAccess::ItemAccess;

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
    return nullptr;
  }
  // The only one: what shows the secret while it is pressed.
  QAccessibleInterface* child(int index) const override { return index == 0 ? eye() : nullptr; }
  int childCount() const override { return eye() == nullptr ? 0 : 1; }
  int indexOfChild(const QAccessibleInterface* child) const override { return child == eye() ? 0 : -1; }
  QAccessibleInterface* childAt(int x, int y) const override {
    QAccessibleInterface* found = eye();
    return found != nullptr && !found->state().invisible && found->rect().contains(x, y) ? found : nullptr;
  }
  QAccessible::Role role() const override { return QAccessible::EditableText; }
  QAccessible::State state() const override {
    QAccessible::State state = ItemAccess::state();
    state.passwordEdit = true;
    state.editable = true;
    state.selectableText = true;
    state.focusable = true;
    state.focused = item().hasActiveFocus();
    return state;
  }
  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Name) return item().property(nameProperty).toString();
    return kind == QAccessible::Value ? dots() : QString();
  }

  int characterCount() const override { return item().property("length").toInt(); }
  QString text(int start, int end) const override { return dots().mid(start, std::max(0, end - start)); }
  int cursorPosition() const override { return item().property("cursorPosition").toInt(); }
  void setCursorPosition(int position) override { item().setProperty("cursorPosition", position); }
  int selectionCount() const override { return selection().first < selection().second ? 1 : 0; }
  void selection(int index, int* start, int* end) const override {
    const auto [first, last] = index == 0 ? selection() : std::pair(0, 0);
    *start = first;
    *end = last;
  }
  void addSelection(int start, int end) override { setSelection(0, start, end); }
  void removeSelection(int) override { QMetaObject::invokeMethod(&item(), "deselect"); }
  void setSelection(int, int start, int end) override {
    QMetaObject::invokeMethod(&item(), "select", Q_ARG(int, start), Q_ARG(int, end));
  }
  QRect characterRect(int) const override { return rect(); }
  int offsetAtPoint(const QPoint&) const override { return -1; }
  void scrollToSubstring(int, int) override {}
  QString attributes(int, int* start, int* end) const override {
    *start = 0;
    *end = characterCount();
    return {};
  }

  QStringList actionNames() const override { return {setFocusAction()}; }
  void doAction(const QString& action) override {
    if (action == setFocusAction()) item().forceActiveFocus();
  }
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

 private:
  QString dots() const { return QString(characterCount(), QChar(0x2022)); }
  std::pair<int, int> selection() const {
    return {item().property("selectionStart").toInt(), item().property("selectionEnd").toInt()};
  }
  QAccessibleInterface* eye() const {
    for (QQuickItem* child : item().childItems()) {
      if (QAccessibleInterface* found = QAccessible::queryAccessibleInterface(child)) return found;
    }
    return nullptr;
  }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* item = qobject_cast<QQuickItem*>(object);
  const bool holdsSecret = item != nullptr && item->metaObject()->indexOfProperty(nameProperty) >= 0;
  return holdsSecret ? new AccessibleSecret(item) : nullptr;
}

}  // namespace

void SecretAccess::install() {
  [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(makeInterface), true);
}
