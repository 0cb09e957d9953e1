#include "Tidewell/Screens/DesktopPresence.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QGuiApplication>
#include <QTest>
#include <string>
#include <vector>

// A desktop on a bus of the test's own; see with-passwords.

namespace {

using testing::ElementsAre;

class Desktop : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  std::vector<std::string> notices;

 public slots:
  unsigned Notify(const QString& application, unsigned, const QString&, const QString& title, const QString& body,
                  const QStringList&, const QVariantMap& hints, int) {
    notices.push_back((application + '|' + title + '|' + body + '|' + hints["desktop-entry"].toString()).toStdString());
    return 1;
  }
};

class Portal : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")

 public:
  std::vector<std::string> inhibitions;

 public slots:
  QDBusObjectPath Inhibit(const QString&, unsigned flags, const QVariantMap& options) {
    inhibitions.push_back(std::to_string(flags) + ' ' + options["reason"].toString().toStdString());
    return QDBusObjectPath("/request");
  }
};

class Request : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")

 public:
  int closings = 0;

 public slots:
  void Close() { ++closings; }
};

class Logind : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

 public:
  Logind() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    readEnd = ends[0];
    given = QDBusUnixFileDescriptor(ends[1]);
    ::close(ends[1]);
  }
  ~Logind() override { ::close(readEnd); }

  // The end that was handed out is closed everywhere.
  bool isReleased() {
    given = QDBusUnixFileDescriptor();
    char byte = 0;
    return ::read(readEnd, &byte, 1) == 0;
  }

  int readEnd = -1;
  QDBusUnixFileDescriptor given;
  std::vector<std::string> inhibitions;

 public slots:
  QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why, const QString& mode) {
    inhibitions.push_back((what + '|' + who + '|' + why + '|' + mode).toStdString());
    return given;
  }
};

class OnABus : public testing::Test {
 protected:
  // One bus plays both.
  static void SetUpTestSuite() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", qgetenv("DBUS_SESSION_BUS_ADDRESS")); }

  void offer(const char* service, const char* path, QObject& object) {
    ASSERT_TRUE(bus.registerService(service));
    services.push_back(service);
    ASSERT_TRUE(bus.registerObject(path, &object, QDBusConnection::ExportAllSlots));
  }
  ~OnABus() override {
    for (const QString& service : services) bus.unregisterService(service);
  }

  QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "the desktop's");
  QStringList services;
  const Presence presence = DesktopPresence::make();
};

TEST_F(OnABus, NoticesGoToTheDesktop) {
  Desktop desktop;
  offer("org.freedesktop.Notifications", "/org/freedesktop/Notifications", desktop);
  QGuiApplication::setApplicationDisplayName("Lorewick");
  QGuiApplication::setDesktopFileName("app.tidewell.Tidewell");
  presence.notify("Export finished", "/home/ana/R&D <2>");
  ASSERT_TRUE(QTest::qWaitFor([&] { return !desktop.notices.empty(); }));
  EXPECT_THAT(desktop.notices,
              ElementsAre("Lorewick|Export finished|/home/ana/R&amp;D &lt;2&gt;|app.tidewell.Tidewell"));
}

TEST_F(OnABus, ThePortalKeepsTheMachineAwake) {
  Portal portal;
  Request request;
  offer("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", portal);
  ASSERT_TRUE(bus.registerObject("/request", &request, QDBusConnection::ExportAllSlots));
  std::shared_ptr<void> awake = presence.keepAwake("Exporting");
  ASSERT_TRUE(QTest::qWaitFor([&] { return !portal.inhibitions.empty(); }));
  EXPECT_THAT(portal.inhibitions, ElementsAre("12 Exporting"));
  QTest::qWait(50);
  EXPECT_EQ(request.closings, 0);
  awake.reset();
  EXPECT_TRUE(QTest::qWaitFor([&] { return request.closings == 1; }));
}

TEST_F(OnABus, AnAnswerThatComesTooLateKeepsNothingAwake) {
  Portal portal;
  Request request;
  offer("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", portal);
  ASSERT_TRUE(bus.registerObject("/request", &request, QDBusConnection::ExportAllSlots));
  presence.keepAwake("Exporting").reset();
  EXPECT_TRUE(QTest::qWaitFor([&] { return request.closings == 1; }));
}

TEST_F(OnABus, LogindDoesWhereThereIsNoPortal) {
  Logind logind;
  offer("org.freedesktop.login1", "/org/freedesktop/login1", logind);
  std::shared_ptr<void> awake = presence.keepAwake("Exporting");
  ASSERT_TRUE(QTest::qWaitFor([&] { return !logind.inhibitions.empty(); }));
  EXPECT_THAT(logind.inhibitions, ElementsAre("sleep:idle|Lorewick|Exporting|block"));
  QTest::qWait(50);
  EXPECT_FALSE(logind.isReleased());
  awake.reset();
  EXPECT_TRUE(QTest::qWaitFor([&] { return logind.isReleased(); }));
}

}  // namespace

#include "PresenceTests.moc"
