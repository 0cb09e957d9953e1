#include "Tidewell/Screens/DesktopWorkspace.h"

#include <QDesktopServices>
#include <QProcess>
#include <functional>

#include "Tidewell/Services/PathURL.h"

#ifndef Q_OS_MACOS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#endif

namespace {

void open(const QUrl& url, const std::function<void()>& failed) {
  if (!QDesktopServices::openUrl(url)) failed();
}

#ifdef Q_OS_MACOS

void reveal(const QUrl& folder, const std::function<void()>& failed) {
  if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), folder.toLocalFile()})) failed();
}

#else

void reveal(const QUrl& folder, const std::function<void()>& failed) {
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  call.setArguments({QStringList{folder.toString(QUrl::FullyEncoded)}, QString()});
  // The watcher has no owner: it goes by itself when the answer is there.
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, folder, failed] {
    if (watcher->isError()) open(folder, failed);
    watcher->deleteLater();
  });
}

#endif

}  // namespace

Workspace DesktopWorkspace::make() {
  return {
      .openURL = [](const std::string& url) { return QDesktopServices::openUrl(QUrl(QString::fromStdString(url))); },
      .openFile = [](const std::filesystem::path& file, const auto& failed) { open(fileURL(file), failed); },
      .revealInFinder = [](const std::filesystem::path& folder,
                           const auto& failed) { reveal(fileURL(folder), failed); },
  };
}
