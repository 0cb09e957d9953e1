#pragma once

#include <gtest/gtest.h>

#include <QPointF>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QUrl>
#include <atomic>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Application/Screens/Console.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tidewell/Screens/LorewickApp.h"

class QMimeData;

// The real window on a real library of backups. What lies outside the
// application is played: the password store, the folder chooser, the desktop.
namespace WindowTest {

namespace fs = std::filesystem;

// Passwords in memory, by account.
class MemoryPasswords {
 public:
  PasswordStore store();
  std::map<std::string, std::string> all() const;
  void put(const std::string& account, const std::string& password);

  std::atomic<bool> isThere = true;

 private:
  mutable std::mutex lock_;
  std::map<std::string, std::string> passwords_;
};

// What a test wants to have at hand before the window opens.
struct Wishes {
  std::optional<Fixture::BackupContents> contents = ExportTest::smallBackup();  // absent: the backup is there already
  bool listed = true;                                                           // the backup stands in the library
  bool hasHome = true;                                                          // there is a home folder to export to
  bool realFolderDialog = false;  // instead of the answers that the test gives
  bool opensBackup = false;       // the application is started with the backup
  bool accessDenied = false;      // the user may not list the library's folder
  bool guardsClicks = false;      // for as long as people have it; else only until the next event
};

class Scene : public testing::Test {
 protected:
  // Opens the window, shows it and waits until the library was read. Expects a silent console from here on.
  void open(const Wishes& wishes = {});
  void TearDown() override;
  // Ends `accessDenied`.
  void becomeOneself();

  const ExportState& state() const { return app->controller().state(); }
  ExportViewModel& controller() { return app->controller(); }
  QQuickWindow& window() const { return *app->window(); }

  // Spins the event loop until the condition holds; a failure after ten seconds.
  bool until(const std::function<bool()>& condition, const std::string& what);
  // The same for work that takes long; a failure after two minutes.
  bool eventually(const std::function<bool()>& condition, const std::string& what);

  // The visible item of that name, also within a delegate or a popup; null without one.
  QQuickItem* find(const std::string& name) const;
  QQuickItem& item(const std::string& name);
  bool isShown(const std::string& name) const { return find(name) != nullptr; }
  // Every text that can be read at present.
  std::vector<QString> textsShown() const;
  bool shows(const QString& text) const;
  void expectShown(const QString& text);
  void expectGone(const QString& text);
  // The item that the keys go to; empty when it has no name.
  std::string focused() const;

  // As a hand does: waits until the item can be clicked, brings it into view, clicks its middle.
  void click(const std::string& name);
  void type(const QString& text);
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  // Tabs until the item has the focus.
  void tabTo(const std::string& name);

  // Drags these over the window; whether the window would take them.
  bool dragOver(const QList<QUrl>& urls, const QString& text = {});
  void dragAway();
  // Drags these over the window and lets go; whether the window took them.
  bool drop(const QList<QUrl>& urls, const QString& text = {});
  // The same from a source that offers these actions; what it is told was done, nothing when it was refused.
  std::optional<Qt::DropAction> dropOffering(Qt::DropActions offered, Qt::KeyboardModifiers held,
                                             const QList<QUrl>& urls);

  // The steps that lead to later ones.
  void continueWithBackup();
  void chooseDestination();
  void exportAll();

  Fixture::TemporaryDirectory folder;
  fs::path root = folder / "MobileSync" / "Backup";
  fs::path backup = root / "00008110-000A1B2C3D4E5F60";
  fs::path destination = folder / "Kept";
  MemoryPasswords passwords;
  std::deque<std::optional<fs::path>> chosenFolders;  // the answers of the folder chooser, in order
  std::vector<FolderRequest> folderRequests;
  std::vector<fs::path> openedFiles;
  bool opensFiles = true;  // the desktop can
  std::vector<fs::path> revealedFolders;
  std::unique_ptr<Console> console;
  std::unique_ptr<LorewickApp> app;

 private:
  ExportViewModel::Setup setup(const Wishes& wishes);
  bool enter(const QMimeData& data, Qt::DropActions offered, Qt::KeyboardModifiers held);
  QPoint middle() const;
  void scrollToRow(const std::string& name);
  bool isCovered(const std::string& name) const;
  void prepare(const Wishes& wishes);
  // Permissions bind the superuser, too, while he is somebody else.
  void becomeNobody();
};

}  // namespace WindowTest
