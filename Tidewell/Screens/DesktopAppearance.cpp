#include "Tidewell/Screens/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString enableAnimations = QStringLiteral("enable-animations");

// The values of the portal's color-scheme setting.
enum class ColorScheme : unsigned { noPreference = 0, dark = 1, light = 2 };

std::optional<bool> prefersDark(const QVariant& scheme) {
  if (scheme.toUInt() == static_cast<unsigned>(ColorScheme::dark)) return true;
  if (scheme.toUInt() == static_cast<unsigned>(ColorScheme::light)) return false;
  return std::nullopt;
}

// A reply to Read holds the value in a variant within the variant.
QVariant innermost(QVariant value) {
  while (value.userType() == qMetaTypeId<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value;
}

bool isPaletteDark() {
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

}  // namespace

DesktopAppearance::DesktopAppearance(Appearance& appearance) : appearance_(appearance) {
  update();
  qApp->installEventFilter(this);
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this, SLOT(takeChange(QDBusMessage)));
  ask(appearanceGroup, colorScheme);
  ask(interfaceGroup, enableAnimations);
}

bool DesktopAppearance::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange) update();
  return QObject::eventFilter(watched, event);
}

void DesktopAppearance::ask(const QString& group, const QString& key) {
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  call.setArguments({group, key});
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (!reply.isError()) takeSetting(group, key, reply.value());
    watcher->deleteLater();
  });
}

void DesktopAppearance::takeChange(const QDBusMessage& change) {
  const QVariantList arguments = change.arguments();
  if (arguments.size() != 3) return;
  takeSetting(arguments[0].toString(), arguments[1].toString(), QDBusVariant(arguments[2]));
}

void DesktopAppearance::takeSetting(const QString& group, const QString& key, const QDBusVariant& value) {
  const QVariant setting = innermost(value.variant());
  if (group == appearanceGroup && key == colorScheme) {
    prefersDark_ = prefersDark(setting);
    update();
  }
  if (group == interfaceGroup && key == enableAnimations) appearance_.setReducesMotion(!setting.toBool());
}

void DesktopAppearance::update() { appearance_.setDark(prefersDark_.value_or(isPaletteDark())); }
