#include "Tidewell/Screens/DesktopWorkspace.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <functional>

#include "Tidewell/Services/PathURL.h"

#ifndef Q_OS_MACOS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#endif

namespace {

using Failed = std::function<void()>;

void openByQt(const QUrl& url, const Failed& failed) {
  if (!QDesktopServices::openUrl(url)) failed();
}

#ifdef Q_OS_MACOS

void open(const QUrl& url, const Failed& failed) { openByQt(url, failed); }

void reveal(const QUrl& folder, const Failed& failed) {
  if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), folder.toLocalFile()})) failed();
}

#else

// From within a sandbox only Qt knows the way out.
bool isSandboxed() { return qEnvironmentVariableIsSet("FLATPAK_ID") || qEnvironmentVariableIsSet("SNAP"); }

// Qt starts the desktop's opener and does not ask how it ended; what it says to a console is nobody's business.
void open(const QUrl& url, const Failed& failed) {
  const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
  if (opener.isEmpty() || isSandboxed()) return openByQt(url, failed);
  // It may live as long as what it opened, longer than this program: nobody owns it.
  auto* const process = new QProcess;
  process->setStandardOutputFile(QProcess::nullDevice());
  process->setStandardErrorFile(QProcess::nullDevice());
  QObject::connect(process, &QProcess::finished, process, [process, failed](int exitCode, QProcess::ExitStatus status) {
    if (exitCode != 0 || status != QProcess::NormalExit) failed();
    process->deleteLater();
  });
  QObject::connect(process, &QProcess::errorOccurred, process, [process, failed](QProcess::ProcessError error) {
    if (error != QProcess::FailedToStart) return;
    failed();
    process->deleteLater();
  });
  process->start(opener, {url.toString(QUrl::FullyEncoded)});
}

void reveal(const QUrl& folder, const Failed& failed) {
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  call.setArguments({QStringList{folder.toString(QUrl::FullyEncoded)}, QString()});
  // The watcher goes by itself when the answer is there, at the latest with the application.
  auto* watcher =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), QCoreApplication::instance());
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
