#include <gmock/gmock.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QTest>

#include "Tests/Support/TemporaryDirectory.h"
#include "Tidewell/Screens/FolderPrompt.h"

// A desktop's portal on a bus of the test's own; see with-passwords.

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

class FileChooserPortal : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileChooser")

 public:
  QStringList titles;
  QVariantMap options;  // of the last question
  QString dialog;       // its request's path
  bool isOfLongAgo = false;
  bool refuses = false;

  void answer(unsigned response, const QVariantMap& results) {
    QDBusMessage signal = QDBusMessage::createSignal(dialog, requestInterface, "Response");
    signal.setArguments({response, results});
    bus_->send(signal);
  }
  void use(QDBusConnection& bus) { bus_ = &bus; }

 public slots:
  QDBusObjectPath OpenFile(const QString&, const QString& title, const QVariantMap& asked) {
    titles.append(title);
    options = asked;
    if (refuses) {
      sendErrorReply(QDBusError::UnknownMethod);
      return QDBusObjectPath("/");
    }
    const QString sender = message().service().mid(1).replace('.', '_');
    dialog = isOfLongAgo ? "/old/request"
                         : "/org/freedesktop/portal/desktop/request/" + sender + '/' + asked["handle_token"].toString();
    return QDBusObjectPath(dialog);
  }

 private:
  QDBusConnection* bus_ = nullptr;
};

class OnABusFolders : public testing::Test {
 protected:
  OnABusFolders() {
    portal.use(bus);
    fs::create_directories(folder / "here");
  }
  ~OnABusFolders() override { bus.unregisterService("org.freedesktop.portal.Desktop"); }

  void offer() {
    ASSERT_TRUE(bus.registerObject("/org/freedesktop/portal/desktop", &portal, QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(bus.registerService("org.freedesktop.portal.Desktop"));
  }
  void ask(const fs::path& at) {
    prompt.ask({.title = "Choose where to save", .message = "…", .confirmButton = "Choose", .initialFolder = at},
               [this](const auto& answer) { answers.push_back(answer); });
  }
  bool isOnDesktop() {
    return QTest::qWaitFor([&] { return prompt.isOnDesktop(); });
  }
  bool isAnswered() {
    return QTest::qWaitFor([&] { return !answers.empty(); });
  }

  Fixture::TemporaryDirectory folder;
  QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "the folder portal's");
  FileChooserPortal portal;
  L10n texts{StringTable(), Locale{"en_US"}, TimeZone{"UTC"}};
  BackgroundWork work;
  FolderPrompt prompt{{.work = work, .texts = texts, .home = folder.path(), .asksDesktop = true}};
  std::vector<std::optional<fs::path>> answers;
};

TEST_F(OnABusFolders, AreChosenInTheDesktopsDialog) {
  offer();
  ask(folder / "here" / "gone");
  ASSERT_TRUE(isOnDesktop());
  EXPECT_FALSE(prompt.isInWindow());
  EXPECT_EQ(portal.titles, QStringList{"Choose where to save"});
  EXPECT_EQ(portal.options["directory"], true);
  EXPECT_EQ(portal.options["modal"], true);
  EXPECT_EQ(portal.options["accept_label"], "Choose");
  const std::string current = (folder / "here").string();
  EXPECT_EQ(portal.options["current_folder"].toByteArray().toStdString(), current + '\0');
  portal.answer(0, {{"uris", QStringList{"file:///home/ana/R%26D%20caf%E9"}}});
  ASSERT_TRUE(isAnswered());
  EXPECT_THAT(answers, ElementsAre(fs::path("/home/ana/R&D caf\xE9")));
  EXPECT_FALSE(prompt.isOpen());
}

TEST_F(OnABusFolders, AreNoneWhenTheDialogIsCancelled) {
  offer();
  ask(folder.path());
  ASSERT_TRUE(isOnDesktop());
  portal.answer(1, {});
  ASSERT_TRUE(isAnswered());
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(OnABusFolders, AreNoneWhenTheFolderIsOnNoVolumeHere) {
  offer();
  ask(folder.path());
  ASSERT_TRUE(isOnDesktop());
  portal.answer(0, {{"uris", QStringList{"sftp://elsewhere/folder"}}});
  ASSERT_TRUE(isAnswered());
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
}

TEST_F(OnABusFolders, AreAskedForInTheWindowWithoutAPortal) {
  ask(folder / "here");
  ASSERT_TRUE(QTest::qWaitFor([&] { return prompt.isInWindow() && prompt.content().name == "here"; }));
  prompt.choose();
  EXPECT_THAT(answers, ElementsAre(folder / "here"));
}

TEST_F(OnABusFolders, AreAskedForInTheWindowWhenThePortalCannotAsk) {
  portal.refuses = true;
  offer();
  ask(folder / "here");
  ASSERT_TRUE(QTest::qWaitFor([&] { return prompt.isInWindow() && prompt.content().name == "here"; }));
  EXPECT_EQ(portal.titles.size(), 1);
}

TEST_F(OnABusFolders, ComeFromPortalsOfLongAgoToo) {
  portal.isOfLongAgo = true;
  offer();
  ask(folder.path());
  ASSERT_TRUE(isOnDesktop());
  portal.answer(0, {{"uris", QStringList{"file:///home/ana"}}});
  ASSERT_TRUE(isAnswered());
  EXPECT_THAT(answers, ElementsAre(fs::path("/home/ana")));
}

TEST_F(OnABusFolders, AreAskedForOnceAtATime) {
  offer();
  ask(folder.path());
  ASSERT_TRUE(isOnDesktop());
  const QString first = portal.dialog;
  ask(folder.path());
  EXPECT_THAT(answers, ElementsAre(std::nullopt));
  ASSERT_TRUE(isOnDesktop());
  EXPECT_NE(portal.dialog, first);
  portal.answer(0, {{"uris", QStringList{"file:///home/ana"}}});
  EXPECT_TRUE(QTest::qWaitFor([&] { return answers.size() == 2; }));
  EXPECT_EQ(answers.back(), fs::path("/home/ana"));
}

}  // namespace

#include "PortalFolderChooserTests.moc"
