#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QQmlEngine>
#include <QQmlIncubationController>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStyleHints>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "Tests/Application/Gallery/ScreenFaults.h"
#include "Tests/Application/Gallery/ScreenStates.h"
#include "Tests/Application/Screens/MemoryPlatform.h"
#include "Tidewell/Screens/LorewickApp.h"

// Shows the window in each of its states, light and dark, large and small, after
// others and first, keeps a picture of each, and fails when a text or symbol is not
// seen as it should be, and when Qt has anything to warn of.

namespace {

constexpr QSize large(900, 812);
constexpr QSize small(640, 480);
constexpr QSize least(600, 430);

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

// Lists make the rows beyond their ends while there is nothing else to do.
bool isMakingRows(const QQuickWindow& window) {
  return qmlEngine(&window)->incubationController()->incubatingObjectCount() > 0;
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
    if (isMakingRows(window)) frames = 0;
  }
  QObject::disconnect(count);
  if (frames < 2) qWarning("The window drew nothing for five seconds.");
}

L10n english() { return L10n(StringTable(), Locale{"en_US"}, TimeZone{"UTC"}); }

// A language from right to left, as far as shows what becomes of figures, names and paths.
L10n arabic() {
  return L10n(StringTable({{"Step 1 of 3 — Choose a backup", "الخطوة 1 من 3 — اختر نسخة احتياطية"},
                           {"Continue", "متابعة"},
                           {"Back", "رجوع"},
                           {"Start Export", "بدء التصدير"},
                           {"Choose folder…", "اختر مجلدًا…"},
                           {"What to export", "ما الذي سيُصدَّر"},
                           {"Photos", "الصور"},
                           {"Videos", "مقاطع الفيديو"},
                           {"Save to", "الحفظ في"},
                           {"Will copy", "سيُنسخ"},
                           {"Media", "الوسائط"},
                           {"Copying media", "جارٍ نسخ الوسائط"},
                           {"%lld of %lld", "%lld من %lld"},
                           {"%lld bytes", "%lld بايت"},
                           {"%lld copied · %lld already present · %lld transcripts · %lld failed",
                            "نُسخ %lld · موجود %lld · نصوص %lld · فشل %lld"}},
                          "ar"),
              Locale{"ar_EG"}, TimeZone{"UTC"});
}

std::unique_ptr<LorewickApp> newApp(const QDir& folder, QSize size, const L10n& texts = english()) {
  PlatformServices services;
  services.passwords = PasswordStore::none();
  auto app = std::make_unique<LorewickApp>(ExportViewModel::Setup{
      .services = services, .texts = texts, .preferencesURL = folder.filePath("preferences.json").toStdString()});
  if (app->window() == nullptr) qFatal("The window could not be loaded.");
  app->appearance().setReducesMotion(true);
  app->window()->resize(size);
  app->window()->show();
  return app;
}

// The window with that state, once it has been drawn and found to be without faults.
QImage pictureOf(LorewickApp& app, const ScreenState& shown) {
  QQuickWindow& window = *app.window();
  app.screens().show(shown.state, screenStatesNow());
  waitForFrames(window);
  for (const QString& fault : screenFaults(window)) qWarning("%s: %s.", shown.name.c_str(), qPrintable(fault));
  return window.grabWindow();
}

void keep(const QImage& picture, const QDir& folder, const QString& name) {
  if (!picture.save(folder.filePath(name))) qWarning("Cannot write %s.", qPrintable(name));
}

void takePictures(LorewickApp& app, const QDir& folder, QSize size, const char* suffix) {
  app.window()->resize(size);
  for (const ScreenState& each : allScreenStates()) {
    std::fprintf(stderr, "%s-%s\n", each.name.c_str(), suffix);
    app.screens().show({}, screenStatesNow());
    keep(pictureOf(app, each), folder, QString::fromStdString(each.name) + '-' + suffix + ".png");
  }
}

// What was blended may be rounded otherwise.
bool isAlmost(QRgb one, QRgb other) {
  constexpr int seenByNobody = 2;
  return std::abs(qRed(one) - qRed(other)) <= seenByNobody && std::abs(qGreen(one) - qGreen(other)) <= seenByNobody &&
         std::abs(qBlue(one) - qBlue(other)) <= seenByNobody;
}

bool lookAlike(const QImage& one, const QImage& other) {
  if (one.size() != other.size()) return false;
  for (int y = 0; y < one.height(); ++y) {
    for (int x = 0; x < one.width(); ++x) {
      if (!isAlmost(one.pixel(x, y), other.pixel(x, y))) return false;
    }
  }
  return true;
}

// What a window shows first must look as it does after everything else.
void compareWithFreshWindows(const QDir& folder, QSize size, const char* suffix) {
  for (const ScreenState& each : allScreenStates()) {
    const std::unique_ptr<LorewickApp> app = newApp(folder, size);
    waitForFrames(*app->window());
    const QImage first = pictureOf(*app, each);
    const QString name = QString::fromStdString(each.name) + '-' + suffix;
    const QImage later(folder.filePath(name + ".png"));
    if (lookAlike(first, later)) continue;
    qWarning("%s looks different in a fresh window.", qPrintable(name));
    keep(first, folder, name + "-fresh.png");
  }
}

void takePicturesOfChooser(LorewickApp& app, const QDir& folder, QSize size, const char* suffix) {
  app.window()->resize(size);
  app.screens().show(allScreenStates().front().state, screenStatesNow());
  const FolderRequest request{.title = "Choose where to save",
                              .message =
                                  "Chats and media will be saved here. Files that are already there with the "
                                  "same size are skipped.",
                              .confirmButton = "Choose",
                              .canCreateFolders = true};
  for (const ChooserState& each : allChooserStates()) {
    app.folders().show(request, each.state);
    waitForFrames(*app.window());
    app.window()->findChild<QObject*>("folderChooser")->setProperty("isNaming", each.isNaming);
    waitForFrames(*app.window());
    for (const QString& fault : screenFaults(*app.window())) qWarning("%s: %s.", each.name.c_str(), qPrintable(fault));
    keep(app.window()->grabWindow(), folder, QString::fromStdString(each.name) + '-' + suffix + ".png");
    app.folders().cancel();
  }
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
  QGuiApplication::styleHints()->setCursorFlashTime(0);
  const std::unique_ptr<LorewickApp> app = newApp(folder, large);
  takePictures(*app, folder, large, "light");
  takePictures(*app, folder, small, "light-small");
  takePictures(*app, folder, least, "light-least");
  takePicturesOfChooser(*app, folder, large, "light");
  takePicturesOfChooser(*app, folder, least, "light-least");
  app->appearance().setDark(true);
  takePictures(*app, folder, large, "dark");
  takePicturesOfChooser(*app, folder, large, "dark");
  compareWithFreshWindows(folder, large, "light");
  compareWithFreshWindows(folder, small, "light-small");
  const std::unique_ptr<LorewickApp> mirrored = newApp(folder, large, arabic());
  takePictures(*mirrored, folder, large, "right-to-left");
  std::fprintf(stderr, "%d warnings\n", warnings.load());
  return warnings == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
