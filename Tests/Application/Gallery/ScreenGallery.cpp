#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <atomic>
#include <cstdio>

#include "Tests/Application/Gallery/ScreenStates.h"
#include "Tests/Application/Screens/MemoryPlatform.h"
#include "Tidewell/Screens/LorewickApp.h"

// Shows the window in each of its states, light and dark, large and small, keeps
// a picture of each, and fails when Qt has anything to warn of.

namespace {

std::atomic<int> warnings = 0;

void countWarnings(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type != QtDebugMsg && type != QtInfoMsg) ++warnings;
  std::fprintf(stderr, "%s\n", qPrintable(message));
}

bool isPageSeen(const QQuickWindow& window) {
  const auto* page = window.findChild<QObject*>("page");
  const auto* step = page == nullptr ? nullptr : page->property("item").value<QQuickItem*>();
  return step != nullptr && step->opacity() == 1;
}

// Two frames, since one state may have the next frame laid out anew.
void waitForFrames(QQuickWindow& window) {
  std::atomic<int> frames = 0;
  const auto count = QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&] { ++frames; });
  QElapsedTimer timer;
  timer.start();
  while ((frames < 2 || !isPageSeen(window)) && timer.elapsed() < 5000) {
    window.update();
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
  }
  QObject::disconnect(count);
  if (frames < 2) qWarning("The window drew nothing for five seconds.");
}

void takePictures(LorewickApp& app, const QDir& folder, QSize size, const char* suffix) {
  QQuickWindow& window = *app.window();
  window.resize(size);
  for (const ScreenState& each : allScreenStates()) {
    std::fprintf(stderr, "%s-%s\n", each.name.c_str(), suffix);
    app.screens().show({}, screenStatesNow());
    app.screens().show(each.state, screenStatesNow());
    waitForFrames(window);
    const QString name = QString::fromStdString(each.name) + '-' + suffix + ".png";
    if (!window.grabWindow().save(folder.filePath(name))) qWarning("Cannot write %s.", qPrintable(name));
  }
}

// The folder dialog that Qt draws itself where the desktop has none.
void takePictureOfDialog(LorewickApp& app, const QDir& folder, QSize size, const QString& name) {
  app.window()->resize(size);
  app.screens().show(allScreenStates().front().state, screenStatesNow());
  app.folders().ask({.title = "Choose where to save",
                     .message = "Chats and media will be saved here. Files that are already there with the same size "
                                "are skipped.",
                     .confirmButton = "Choose",
                     .initialFolder = "/usr/share",
                     .canCreateFolders = true},
                    [](const auto&) {});
  waitForFrames(*app.window());
  app.window()->grabWindow().save(folder.filePath(name));
  app.folders().cancel();
  waitForFrames(*app.window());
}

}  // namespace

int main(int argc, char* argv[]) {
  qInstallMessageHandler(countWarnings);
  const MemoryPlatform platform;
  QGuiApplication application(argc, argv);
  QGuiApplication::setApplicationDisplayName("Lorewick");
  if (argc != 2) {
    std::fputs("usage: tidewell-screen-gallery FOLDER\n", stderr);
    return 2;
  }
  const QDir folder(argv[1]);
  folder.mkpath(".");
  PlatformServices services;
  services.passwords = PasswordStore::none();
  LorewickApp app({.services = services,
                   .texts = L10n(StringTable(), Locale{"en_US"}, TimeZone{"UTC"}),
                   .preferencesURL = std::filesystem::path(argv[1]) / "preferences.json"});
  if (app.window() == nullptr) return EXIT_FAILURE;
  app.appearance().setReducesMotion(true);
  app.window()->show();
  takePictures(app, folder, {900, 740}, "light");
  takePictures(app, folder, {640, 480}, "light-small");
  takePictureOfDialog(app, folder, {640, 480}, "folder-dialog-light-small.png");
  app.appearance().setDark(true);
  takePictures(app, folder, {900, 740}, "dark");
  takePictureOfDialog(app, folder, {900, 740}, "folder-dialog-dark.png");
  std::fprintf(stderr, "%d warnings\n", warnings.load());
  return warnings == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
