#include "Tidewell/Screens/DesktopPresence.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QString>

#ifdef Q_OS_MACOS
#include <QProcess>
#else
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>
#include <functional>
#endif

namespace {

bool isInFront() { return QGuiApplication::applicationState() == Qt::ApplicationActive; }

#ifdef Q_OS_MACOS

std::shared_ptr<void> keepAwake(const std::string&) {
  const auto process = std::make_shared<QProcess>();
  process->start(QStringLiteral("/usr/bin/caffeinate"),
                 {QStringLiteral("-i"), QStringLiteral("-w"), QString::number(QCoreApplication::applicationPid())});
  return {nullptr, [process](void*) { process->kill(); }};
}

void notify(const std::string&, const std::string&) {}

#else

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");

// What keeps the machine awake: a request of the portal's, or a file of logind's that is open.
struct Inhibitor {
  bool isWanted = true;
  QDBusObjectPath request;
  QDBusUnixFileDescriptor file;

  void release() {
    isWanted = false;
    file = QDBusUnixFileDescriptor();
    if (request.path().isEmpty()) return;
    QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
        portal, request.path(), QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Close")));
  }
};

// The watcher goes by itself when the answer is there, at the latest with the application.
template <typename Reply>
void whenAnswered(const QDBusPendingCall& call, std::function<void(const Reply&)> take) {
  auto* const watcher = new QDBusPendingCallWatcher(call, QCoreApplication::instance());
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, take = std::move(take)] {
    take(Reply(*watcher));
    watcher->deleteLater();
  });
}

void askLogind(const std::shared_ptr<Inhibitor>& inhibitor, const QString& reason) {
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
  call.setArguments(
      {QStringLiteral("sleep:idle"), QGuiApplication::applicationDisplayName(), reason, QStringLiteral("block")});
  using Reply = QDBusPendingReply<QDBusUnixFileDescriptor>;
  whenAnswered<Reply>(QDBusConnection::systemBus().asyncCall(call), [inhibitor](const Reply& reply) {
    if (!reply.isError() && inhibitor->isWanted) inhibitor->file = reply.value();
  });
}

void askPortal(const std::shared_ptr<Inhibitor>& inhibitor, const QString& reason) {
  constexpr unsigned suspend = 4;
  constexpr unsigned idle = 8;
  QDBusMessage call =
      QDBusMessage::createMethodCall(portal, QStringLiteral("/org/freedesktop/portal/desktop"),
                                     QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
  call.setArguments({QString(), suspend | idle, QVariantMap{{QStringLiteral("reason"), reason}}});
  using Reply = QDBusPendingReply<QDBusObjectPath>;
  whenAnswered<Reply>(QDBusConnection::sessionBus().asyncCall(call), [inhibitor, reason](const Reply& reply) {
    if (reply.isError()) {
      if (inhibitor->isWanted) askLogind(inhibitor, reason);
      return;
    }
    inhibitor->request = reply.value();
    if (!inhibitor->isWanted) inhibitor->release();
  });
}

std::shared_ptr<void> keepAwake(const std::string& reason) {
  const auto inhibitor = std::make_shared<Inhibitor>();
  askPortal(inhibitor, QString::fromStdString(reason));
  return {nullptr, [inhibitor](void*) { inhibitor->release(); }};
}

void notify(const std::string& title, const std::string& text) {
  constexpr unsigned replacesNothing = 0;
  constexpr int asLongAsUsual = -1;
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
  const QString desktopFile = QGuiApplication::desktopFileName();
  // The body may be read as markup.
  call.setArguments({QGuiApplication::applicationDisplayName(), replacesNothing, desktopFile,
                     QString::fromStdString(title), QString::fromStdString(text).toHtmlEscaped(), QStringList(),
                     QVariantMap{{QStringLiteral("desktop-entry"), desktopFile}}, asLongAsUsual});
  QDBusConnection::sessionBus().send(call);
}

#endif

}  // namespace

Presence DesktopPresence::make() { return {.keepAwake = keepAwake, .isWindowInFront = isInFront, .notify = notify}; }
