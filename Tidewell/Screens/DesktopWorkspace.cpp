#include "Tidewell/Screens/DesktopWorkspace.h"

#include <QDesktopServices>
#include <QProcess>

#include "Tidewell/Services/PathURL.h"

#ifndef Q_OS_MACOS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#endif

namespace {

#ifdef Q_OS_MACOS

void reveal(const QUrl& folder) {
  QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), folder.toLocalFile()});
}

#else

void reveal(const QUrl& folder) {
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  call.setArguments({QStringList{folder.toString(QUrl::FullyEncoded)}, QString()});
  // The watcher has no owner: it goes by itself when the answer is there.
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, folder] {
    if (watcher->isError()) QDesktopServices::openUrl(folder);
    watcher->deleteLater();
  });
}

#endif

}  // namespace

Workspace DesktopWorkspace::make() {
  return {
      .openURL = [](const std::string& url) { return QDesktopServices::openUrl(QUrl(QString::fromStdString(url))); },
      .openFile = [](const std::filesystem::path& file) { QDesktopServices::openUrl(fileURL(file)); },
      .revealInFinder = [](const std::filesystem::path& folder) { reveal(fileURL(folder)); },
  };
}
