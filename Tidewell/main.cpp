#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QIcon>
#include <QLocale>
#include <QQuickWindow>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "Tidewell/Screens/DesktopAppearance.h"
#include "Tidewell/Screens/LorewickApp.h"
#include "Tidewell/Screens/QuitSignals.h"
#include "Tidewell/Services/PathURL.h"
#include "Tidewell/Services/ResourceBundle.h"
#include "TidewellCore/Platform/MemoryGuard.h"

namespace {

void describe() {
  QCoreApplication::setApplicationName(QStringLiteral("Lorewick"));
  QCoreApplication::setOrganizationName(QStringLiteral("Lorewick"));
  QCoreApplication::setApplicationVersion(QStringLiteral(TIDEWELL_VERSION));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("Lorewick"));
  QGuiApplication::setDesktopFileName(QStringLiteral("app.tidewell.Tidewell"));
}

// The desktop's, else the one within the program, which need not be installed.
QIcon icon() {
  return QIcon::fromTheme(QStringLiteral("app.tidewell.Tidewell"),
                          QIcon(QStringLiteral(":/app.tidewell.Tidewell.svg")));
}

// What QGuiApplication takes for itself; desktops restore a session with one of them.
void allowQtsOptions(QCommandLineParser& parser) {
  for (const char* name : {"display", "geometry", "icon", "name", "platform", "platformpluginpath", "platformtheme",
                           "plugin", "qwindowgeometry", "qwindowicon", "qwindowtitle", "session", "title"}) {
    QCommandLineOption option(QString::fromLatin1(name), {}, QStringLiteral("value"));
    option.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(option);
  }
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
}

[[noreturn]] void answer(const QString& text) {
  std::fputs(qUtf8Printable(text), stdout);
  std::exit(std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

[[noreturn]] void refuse(const QString& reason) {
  constexpr int wrongUsage = 2;
  std::fprintf(stderr, "%s\n", qUtf8Printable(reason));
  std::exit(wrongUsage);
}

// The backup named on the command line, as it was named. What needs no window is answered here.
QString backupNamed() {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Gets WhatsApp chats and media out of a local iPhone backup into folders."));
  const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Displays this help."));
  parser.addOption(help);
  const QCommandLineOption version = parser.addVersionOption();
  allowQtsOptions(parser);
  parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("The backup to open."),
                               QStringLiteral("[FOLDER]"));
  if (!parser.parse(QCoreApplication::arguments())) refuse(parser.errorText());
  if (parser.isSet(help)) answer(parser.helpText());
  if (parser.isSet(version)) answer(QStringLiteral("Lorewick " TIDEWELL_VERSION "\n"));
  const QStringList folders = parser.positionalArguments();
  if (folders.size() > 1) refuse(parser.helpText().trimmed());
  return folders.value(0);
}

// The backup to open, when one was named.
std::optional<std::filesystem::path> backupToOpen(int argc, char* argv[]) {
  // Where there is no display, there can be no QGuiApplication.
  const QCoreApplication withoutDisplay(argc, argv);
  const QString named = backupNamed();
  if (named.isEmpty()) return std::nullopt;
  const std::filesystem::path folder = localPath(named);
  std::error_code error;  // where the current folder is gone
  const std::filesystem::path whole = std::filesystem::absolute(folder, error);
  return error ? folder : whole;
}

L10n systemTexts() {
  const std::filesystem::path folder = localPath(QCoreApplication::applicationDirPath());
  const auto bundle = ResourceBundle::find(ResourceBundle::searchFolders(folder));
  return L10n(StringTable::load(bundle, QLocale::system().uiLanguages()), Locale::current(), TimeZone::current());
}

}  // namespace

int main(int argc, char* argv[]) {
  // What is typed and what is derived from it stays here between the steps.
  MemoryGuard::refuseCoreDumps();
  describe();
  const std::optional<std::filesystem::path> backup = backupToOpen(argc, argv);
  const QGuiApplication application(argc, argv);
  QGuiApplication::setWindowIcon(icon());

  // Before the application, which takes a while to end what is under way; no signal may cut that short.
  const QuitSignals quitSignals;
  LorewickApp app({.services = {}, .texts = systemTexts(), .preferencesURL = std::nullopt});
  if (app.window() == nullptr) return EXIT_FAILURE;
  const DesktopAppearance appearance(app.appearance());
  app.window()->show();
  app.controller().startUp(backup);
  return QGuiApplication::exec();
}
