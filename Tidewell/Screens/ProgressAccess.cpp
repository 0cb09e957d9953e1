#include "Tidewell/Screens/ProgressAccess.h"

#include "Tidewell/Screens/ItemAccess.h"

namespace {

class AccessibleProgress : public ItemAccess, public QAccessibleValueInterface {
 public:
  using ItemAccess::ItemAccess;

  void* interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this) : nullptr;
  }
  QAccessible::Role role() const override { return QAccessible::ProgressBar; }
  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Name) return item().property("caption").toString();
    return kind == QAccessible::Description ? item().property("count").toString() : QString();
  }

  QVariant currentValue() const override { return item().property("value"); }
  QVariant minimumValue() const override { return item().property("from"); }
  QVariant maximumValue() const override { return item().property("to"); }
  QVariant minimumStepSize() const override { return 0.0; }
  void setCurrentValue(const QVariant&) override {}
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  const bool isKnown = object->inherits("QQuickProgressBar") && object->metaObject()->indexOfProperty("caption") >= 0;
  return isKnown ? new AccessibleProgress(qobject_cast<QQuickItem*>(object)) : nullptr;
}

}  // namespace

void ProgressAccess::install() {
  [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(makeInterface), true);
}
