#include "Tidewell/Screens/PortalFolderChooser.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QUrl>
#include <QUuid>
#include <QWindow>
#include <utility>

namespace {

namespace fs = std::filesystem;

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

// What the portal calls the window that the dialog belongs to; empty where Qt cannot tell.
QString parentWindow() {
  const QWindow* window = QGuiApplication::focusWindow();
  if (window == nullptr || QGuiApplication::platformName() != QStringLiteral("xcb")) return {};
  return QStringLiteral("x11:") + QString::number(window->winId(), 16);
}

// Where the portal puts the request of that token.
QString pathOf(const QString& token) {
  const QString sender = QDBusConnection::sessionBus().baseService().mid(1).replace('.', '_');
  return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

QVariantMap optionsOf(const FolderRequest& request, const QString& token) {
  const std::string& folder = request.initialFolder.native();
  return {{QStringLiteral("handle_token"), token},
          {QStringLiteral("directory"), true},
          {QStringLiteral("modal"), true},
          {QStringLiteral("accept_label"), QString::fromStdString(request.confirmButton)},
          // With the NUL at its end.
          {QStringLiteral("current_folder"), QByteArray(folder.c_str(), static_cast<qsizetype>(folder.size()) + 1)}};
}

// Nothing when it is none of this computer's. The bytes of a name need not be text.
std::optional<fs::path> localFolder(const QString& uri) {
  const QUrl url(uri);
  if (!url.isLocalFile()) return std::nullopt;
  return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

}  // namespace

void PortalFolderChooser::ask(const FolderRequest& request, Outcome outcome) {
  cancel();
  outcome_ = std::move(outcome);
  const QString token = QStringLiteral("tidewell_") + QUuid::createUuid().toString(QUuid::Id128);
  // Before it is asked, so that no answer is missed.
  dialog_ = pathOf(token);
  listen(dialog_, true);
  QDBusMessage call =
      QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/portal/desktop"),
                                     QStringLiteral("org.freedesktop.portal.FileChooser"), QStringLiteral("OpenFile"));
  call.setArguments({parentWindow(), QString::fromStdString(request.title), optionsOf(request, token)});
  auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, asked = dialog_] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusObjectPath> reply(*watcher);
    if (dialog_ != asked) return;  // it was answered already, or cancelled
    if (!reply.isError()) return takeDialog(reply.value().path());
    const std::function<void()> absent = outcome_.absent;
    cancel();
    absent();
  });
}

void PortalFolderChooser::cancel() {
  if (dialog_.isEmpty()) return;
  QDBusConnection::sessionBus().send(
      QDBusMessage::createMethodCall(service, dialog_, requestInterface, QStringLiteral("Close")));
  end();
}

void PortalFolderChooser::end() {
  listen(dialog_, false);
  dialog_.clear();
  outcome_ = {};
}

void PortalFolderChooser::listen(const QString& dialog, bool listens) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  const QString signal = QStringLiteral("Response");
  if (listens) {
    bus.connect({}, dialog, requestInterface, signal, this, SLOT(take(unsigned, QVariantMap)));
  } else {
    bus.disconnect({}, dialog, requestInterface, signal, this, SLOT(take(unsigned, QVariantMap)));
  }
}

// Portals of long ago put it elsewhere.
void PortalFolderChooser::takeDialog(const QString& dialog) {
  if (dialog != dialog_) {
    listen(dialog_, false);
    dialog_ = dialog;
    listen(dialog_, true);
  }
  outcome_.opened();
}

void PortalFolderChooser::take(unsigned response, const QVariantMap& results) {
  constexpr unsigned chosen = 0;
  const QStringList uris = results.value(QStringLiteral("uris")).toStringList();
  const FolderAnswer answered = outcome_.answered;
  end();
  if (answered) answered(response == chosen && !uris.isEmpty() ? localFolder(uris.front()) : std::nullopt);
}
