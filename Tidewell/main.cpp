#include <QCommandLineParser>
#include <QGuiApplication>
#include <QIcon>
#include <QLocale>
#include <QQuickWindow>
#include <filesystem>
#include <optional>
#include <system_error>

#include "Tidewell/Screens/DesktopAppearance.h"
#include "Tidewell/Screens/LorewickApp.h"
#include "Tidewell/Screens/QuitSignals.h"
#include "Tidewell/Services/PathURL.h"
#include "Tidewell/Services/ResourceBundle.h"

namespace {

void describe(QGuiApplication& application) {
  application.setApplicationName(QStringLiteral("Lorewick"));
  application.setApplicationDisplayName(QStringLiteral("Lorewick"));
  application.setOrganizationName(QStringLiteral("Lorewick"));
  application.setApplicationVersion(QStringLiteral(TIDEWELL_VERSION));
  application.setDesktopFileName(QStringLiteral("app.tidewell.Tidewell"));
  // The desktop's, else the one within the program, which need not be installed.
  const QIcon own(QStringLiteral(":/app.tidewell.Tidewell.svg"));
  application.setWindowIcon(QIcon::fromTheme(QStringLiteral("app.tidewell.Tidewell"), own));
}

// The backup to open, when one was named.
std::optional<std::filesystem::path> parse(const QGuiApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Gets WhatsApp chats and media out of a local iPhone backup into folders."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("The backup to open."),
                               QStringLiteral("[FOLDER]"));
  parser.process(application);
  const QStringList folders = parser.positionalArguments();
  if (folders.size() > 1) parser.showHelp(2);
  if (folders.isEmpty() || folders.first().isEmpty()) return std::nullopt;
  const std::filesystem::path folder = localPath(folders.first());
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
  QGuiApplication application(argc, argv);
  describe(application);
  const std::optional<std::filesystem::path> backup = parse(application);

  // Before the application, which takes a while to end what is under way; no signal may cut that short.
  const QuitSignals quitSignals;
  LorewickApp app({.services = {}, .texts = systemTexts(), .preferencesURL = std::nullopt});
  if (app.window() == nullptr) return EXIT_FAILURE;
  const DesktopAppearance appearance(app.appearance());
  app.window()->show();
  app.controller().startUp(backup);
  return QGuiApplication::exec();
}
