#include "Tests/Application/Screens/WindowScene.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <algorithm>

#include "Tests/Support/BackupBuilder.h"

namespace WindowTest {

namespace {

constexpr int patience = 30'000;  // milliseconds
constexpr int longPatience = 120'000;

bool holdsWithin(int milliseconds, const std::function<bool()>& condition, const std::string& what) {
  const bool holds = QTest::qWaitFor(condition, milliseconds);
  EXPECT_TRUE(holds) << "never: " << what;
  return holds;
}

void walk(QQuickItem* item, const std::function<void(QQuickItem*)>& visit) {
  if (!item->isVisible() || item->opacity() == 0) return;
  visit(item);
  for (QQuickItem* child : item->childItems()) walk(child, visit);
}

QPoint middleOf(QQuickItem& item) { return item.mapToScene(QPointF(item.width() / 2, item.height() / 2)).toPoint(); }

// The nearest item around it that scrolls.
QQuickItem* scrollerAround(QQuickItem& item) {
  QQuickItem* around = item.parentItem();
  while (around != nullptr && !around->inherits("QQuickFlickable")) around = around->parentItem();
  return around;
}

void bringIntoView(QQuickItem& item) {
  QQuickItem* scroller = scrollerAround(item);
  if (scroller == nullptr) return;
  auto* content = scroller->property("contentItem").value<QQuickItem*>();
  const QRectF place = item.mapRectToItem(content, QRectF(0, 0, item.width(), item.height()));
  const double top = scroller->property("contentY").toDouble();
  if (place.bottom() > top + scroller->height()) scroller->setProperty("contentY", place.bottom() - scroller->height());
  if (place.top() < top) scroller->setProperty("contentY", place.top());
}

std::unique_ptr<QMimeData> dragged(const QList<QUrl>& urls, const QString& text) {
  auto data = std::make_unique<QMimeData>();
  if (!urls.isEmpty()) data->setUrls(urls);
  if (!text.isEmpty()) data->setText(text);
  return data;
}

}  // namespace

PasswordStore MemoryPasswords::store() {
  return {.load = [this](const std::string& account, const PasswordAnswer&) -> std::optional<SecretBytes> {
            const std::lock_guard guard(lock_);
            const auto found = passwords_.find(account);
            if (found == passwords_.end()) return std::nullopt;
            return SecretBytes(found->second.begin(), found->second.end());
          },
          .save =
              [this](const SecretBytes& password, const std::string& account) {
                const std::lock_guard guard(lock_);
                passwords_[account] = std::string(password.begin(), password.end());
              },
          .remove =
              [this](const std::string& account) {
                const std::lock_guard guard(lock_);
                passwords_.erase(account);
              },
          .isAvailable = [this] { return isThere.load(); }};
}

std::map<std::string, std::string> MemoryPasswords::all() const {
  const std::lock_guard guard(lock_);
  return passwords_;
}

void MemoryPasswords::put(const std::string& account, const std::string& password) {
  const std::lock_guard guard(lock_);
  passwords_[account] = password;
}

ExportViewModel::Setup Scene::setup(const Wishes& wishes) {
  PlatformServices services{.passwords = passwords.store(), .backupRoot = root, .home = folder / "home"};
  if (!wishes.realFolderDialog) {
    services.chooseFolder = [this](const FolderRequest& request, const FolderAnswer& answer) {
      folderRequests.push_back(request);
      ASSERT_FALSE(chosenFolders.empty()) << "nobody expected a folder chooser";
      const std::optional<fs::path> chosen = chosenFolders.front();
      chosenFolders.pop_front();
      answer(chosen);
    };
  }
  services.workspace = {
      .openURL = [](const std::string&) { return false; },
      .openFile =
          [this](const fs::path& file, const auto& failed) {
            openedFiles.push_back(file);
            if (!opensFiles) failed();
          },
      .revealInFinder = [this](const fs::path& place, const auto&) { revealedFolders.push_back(place); }};
  return {.services = std::move(services),
          .texts = L10n(StringTable(), Locale{"en_US"}, TimeZone{"UTC"}),
          .preferencesURL = folder / "preferences.json"};
}

void Scene::prepare(const Wishes& wishes) {
  if (wishes.hasHome) fs::create_directories(folder / "home");
  fs::create_directories(destination);
  if (!wishes.listed) backup = folder / "copied backup";
  if (wishes.contents) Fixture::writeBackup(*wishes.contents, backup);
}

void Scene::open(const Wishes& wishes) {
  prepare(wishes);
  if (wishes.accessDenied) becomeNobody();
  console = std::make_unique<Console>();
  app = std::make_unique<LorewickApp>(setup(wishes));
  if (app->window() == nullptr) throw std::runtime_error("The window could not be loaded.");
  if (!wishes.guardsClicks) window().findChild<QObject*>("footerGuard")->setProperty("interval", 0);
  window().show();
  controller().startUp(wishes.opensBackup ? std::optional(backup) : std::nullopt);
  ASSERT_TRUE(until([&] { return window().isExposed() && !state().isRefreshingLibrary && !state().isInspecting(); },
                    "the library is read"));
}

void Scene::becomeNobody() {
  constexpr unsigned nobody = 65534;
  fs::permissions(folder.path(), fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
  fs::permissions(root, fs::perms::owner_exec);
  if (::getuid() == 0 && ::seteuid(nobody) != 0) throw std::runtime_error("Cannot become somebody else.");
}

void Scene::becomeOneself() {
  if (::getuid() == 0 && ::seteuid(0) != 0) throw std::runtime_error("Cannot become oneself again.");
  if (fs::exists(root)) fs::permissions(root, fs::perms::owner_all);
}

void Scene::TearDown() {
  becomeOneself();
  app.reset();
  if (!console) return;
  EXPECT_EQ(console->messages(), std::vector<std::string>{}) << "the console was not silent";
}

bool Scene::until(const std::function<bool()>& condition, const std::string& what) {
  return holdsWithin(patience, condition, what);
}

bool Scene::eventually(const std::function<bool()>& condition, const std::string& what) {
  return holdsWithin(longPatience, condition, what);
}

QQuickItem* Scene::find(const std::string& name) const {
  QQuickItem* found = nullptr;
  walk(window().contentItem(), [&](QQuickItem* item) {
    if (item->objectName().toStdString() == name) found = item;
  });
  return found;
}

QQuickItem& Scene::item(const std::string& name) {
  const bool isThere = QTest::qWaitFor([&] { return find(name) != nullptr; }, patience);
  QQuickItem* found = find(name);
  if (!isThere || found == nullptr) throw std::runtime_error("There is no item " + name + ".");
  return *found;
}

std::vector<QString> Scene::textsShown() const {
  std::vector<QString> texts;
  walk(window().contentItem(), [&](QQuickItem* item) {
    const QVariant text = item->property("text");
    if (item->inherits("QQuickText") && !text.toString().isEmpty()) texts.push_back(text.toString());
  });
  return texts;
}

bool Scene::shows(const QString& text) const {
  return std::ranges::any_of(textsShown(), [&](const QString& shown) { return shown.contains(text); });
}

void Scene::expectShown(const QString& text) {
  if (until([&] { return shows(text); }, "“" + text.toStdString() + "” is shown")) return;
  for (const QString& shown : textsShown()) ADD_FAILURE() << "shown is “" << shown.toStdString() << "”";
}

void Scene::expectGone(const QString& text) {
  until([&] { return !shows(text); }, "“" + text.toStdString() + "” is gone");
}

std::string Scene::focused() const {
  QQuickItem* item = window().activeFocusItem();
  while (item != nullptr && item->objectName().isEmpty()) item = item->parentItem();
  return item == nullptr ? "" : item->objectName().toStdString();
}

// Sheet and alert let nothing through, also while they fade away, nor does the footer just after a step.
bool Scene::isCovered(const std::string& name) const {
  if (isShown("footerGuard")) return true;
  for (const char* button : {"cancelUnlockButton", "alertOKButton"}) {
    if (isShown(button)) return name != button;
  }
  return false;
}

// A row of the list that is not seen is not even there.
void Scene::scrollToRow(const std::string& name) {
  QQuickItem* list = find("backupList");
  if (list == nullptr || !name.starts_with("backupRow") || isShown(name)) return;
  constexpr int middle = 1;  // ListView.Center
  QMetaObject::invokeMethod(list, "positionViewAtIndex", Q_ARG(int, std::stoi(name.substr(9))), Q_ARG(int, middle));
}

void Scene::click(const std::string& name) {
  scrollToRow(name);
  ASSERT_TRUE(until([&] { return find(name) != nullptr && find(name)->isEnabled() && !isCovered(name); },
                    name + " can be clicked"));
  bringIntoView(item(name));
  QTest::mouseClick(&window(), Qt::LeftButton, Qt::NoModifier, middleOf(item(name)));
}

void Scene::type(const QString& text) {
  for (const QChar letter : text) QTest::sendKeyEvent(QTest::Click, &window(), Qt::Key_unknown, letter, Qt::NoModifier);
}

void Scene::press(Qt::Key key, Qt::KeyboardModifiers modifiers) { QTest::keyClick(&window(), key, modifiers); }

void Scene::tabTo(const std::string& name) {
  for (int i = 0; i < 60 && focused() != name; ++i) press(Qt::Key_Tab);
  EXPECT_EQ(focused(), name) << "the keyboard never came to it";
}

bool Scene::enter(const QMimeData& data, Qt::DropActions offered, Qt::KeyboardModifiers held) {
  QDragEnterEvent event(middle(), offered, &data, Qt::LeftButton, held);
  QCoreApplication::sendEvent(&window(), &event);
  return event.isAccepted();
}

bool Scene::dragOver(const QList<QUrl>& urls, const QString& text) {
  return enter(*dragged(urls, text), Qt::CopyAction, Qt::NoModifier);
}

void Scene::dragAway() {
  QDragLeaveEvent leave;
  QCoreApplication::sendEvent(&window(), &leave);
}

bool Scene::drop(const QList<QUrl>& urls, const QString& text) {
  const auto data = dragged(urls, text);
  if (!enter(*data, Qt::CopyAction, Qt::NoModifier)) {
    dragAway();
    return false;
  }
  QDropEvent event(middle(), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window(), &event);
  return event.isAccepted();
}

std::optional<Qt::DropAction> Scene::dropOffering(Qt::DropActions offered, Qt::KeyboardModifiers held,
                                                  const QList<QUrl>& urls) {
  const auto data = dragged(urls, {});
  if (!enter(*data, offered, held)) {
    dragAway();
    return std::nullopt;
  }
  QDragMoveEvent move(middle() + QPoint(1, 1), offered, data.get(), Qt::LeftButton, held);
  QCoreApplication::sendEvent(&window(), &move);
  if (!move.isAccepted() || move.dropAction() == Qt::IgnoreAction) return std::nullopt;
  QDropEvent event(middle(), offered, data.get(), Qt::LeftButton, held);
  QCoreApplication::sendEvent(&window(), &event);
  return event.isAccepted() ? std::optional(event.dropAction()) : std::nullopt;
}

QPoint Scene::middle() const { return {window().width() / 2, window().height() / 2}; }

void Scene::continueWithBackup() {
  if (!state().backupInfo) click("backupRow0");
  click("continueButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::options; }, "the chats are read"));
}

void Scene::chooseDestination() {
  chosenFolders.push_back(destination);
  click("chooseDestinationButton");
  ASSERT_TRUE(until([&] { return state().availableBytes.has_value(); }, "the free space is known"));
}

void Scene::exportAll() {
  continueWithBackup();
  chooseDestination();
  click("startExportButton");
  ASSERT_TRUE(until([&] { return state().step == WizardStep::done; }, "the export is done"));
}

}  // namespace WindowTest
