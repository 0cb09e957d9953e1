#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>
#include <filesystem>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Export/ExportPreferences.h"

namespace {

namespace fs = std::filesystem;

QString text(const fs::path& path) { return QString::fromStdString(path.string()); }

// The program as people start it, in a home folder of its own.
class Application : public testing::Test {
 protected:
  Application() {
    fs::create_directories(home);
    fs::permissions(home, fs::perms::owner_all);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", text(home));
    environment.insert("XDG_DATA_HOME", text(home / "data"));
    environment.insert("XDG_RUNTIME_DIR", text(home));
    environment.insert("TMPDIR", text(home));
    environment.remove("DBUS_SESSION_BUS_ADDRESS");
    program.setProcessEnvironment(environment);
  }
  ~Application() override {
    program.kill();
    program.waitForFinished();
  }

  void start(const QStringList& arguments) {
    program.start(TIDEWELL_APPLICATION, arguments);
    ASSERT_TRUE(program.waitForStarted());
  }
  void withoutDisplay() {
    QProcessEnvironment environment = program.processEnvironment();
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) environment.remove(name);
    program.setProcessEnvironment(environment);
  }
  bool endedWith(int code) const { return program.exitStatus() == QProcess::NormalExit && program.exitCode() == code; }
  bool ends() { return program.waitForFinished(10'000); }
  std::string output() { return program.readAllStandardOutput().toStdString(); }
  std::string complaints() { return program.readAllStandardError().toStdString(); }
  ExportPreferences remembered() const { return ExportPreferences::load(ExportPreferences::fileURL(home / "data")); }

  Fixture::TemporaryDirectory folder;
  fs::path home = folder / "home";
  QProcess program;
};

TEST_F(Application, OpensTheBackupItIsStartedWithAndEndsTidilyWhenAsked) {
  Fixture::writeBackup(ExportTest::smallBackup(true), folder / "device");
  start({text(folder / "device")});
  EXPECT_TRUE(QTest::qWaitFor([&] { return remembered().lastBackupPath == (folder / "device").string(); }, 20'000))
      << "the backup was never opened";
  EXPECT_EQ(program.state(), QProcess::Running);
  program.terminate();
  ASSERT_TRUE(ends()) << "it goes on after SIGTERM";
  EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(program.exitCode(), 0);
  EXPECT_EQ(complaints(), "");
}

// Its shell sends a signal, and the kernel another.
TEST_F(Application, EndsTidilyWhenItsTerminalIsClosed) {
  Fixture::writeBackup(ExportTest::smallBackup(), folder / "device");
  start({text(folder / "device")});
  ASSERT_TRUE(QTest::qWaitFor([&] { return remembered().lastBackupPath.has_value(); }, 20'000));
  const auto hangUp = [&] { return ::kill(static_cast<pid_t>(program.processId()), SIGHUP); };
  for (int i = 0; i < 10'000 && program.state() == QProcess::Running; ++i) {
    hangUp();
    program.waitForFinished(1);
  }
  EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(program.exitCode(), 0);
}

TEST_F(Application, OpensABackupByItsPathFromWhereItStands) {
  Fixture::writeBackup(ExportTest::smallBackup(), folder / "device");
  program.setWorkingDirectory(text(folder.path()));
  start({"device"});
  EXPECT_TRUE(QTest::qWaitFor([&] { return remembered().lastBackupPath == (folder / "device").string(); }, 20'000));
}

TEST_F(Application, SaysWhatItIsWithoutADisplay) {
  withoutDisplay();
  start({"--version"});
  ASSERT_TRUE(ends());
  EXPECT_TRUE(endedWith(0));
  EXPECT_EQ(output(), "Lorewick " TIDEWELL_VERSION "\n");
  EXPECT_EQ(complaints(), "");
}

TEST_F(Application, HelpsWithoutADisplay) {
  withoutDisplay();
  for (const char* option : {"--help", "-h"}) {
    start({option});
    ASSERT_TRUE(ends());
    EXPECT_TRUE(endedWith(0));
    EXPECT_THAT(output(), testing::AllOf(testing::HasSubstr("[FOLDER]"), testing::HasSubstr("--version"),
                                         testing::Not(testing::HasSubstr("session"))));
    EXPECT_EQ(complaints(), "");
  }
}

TEST_F(Application, RefusesWrongUsageWithoutADisplay) {
  withoutDisplay();
  for (const QStringList& arguments : {QStringList{"a", "b"}, QStringList{"--unknown"}, QStringList{"--help=x"}}) {
    start(arguments);
    ASSERT_TRUE(ends());
    EXPECT_TRUE(endedWith(2)) << arguments.join(' ').toStdString();
    EXPECT_EQ(output(), "");
    EXPECT_NE(complaints(), "");
  }
}

TEST_F(Application, TakesQtsOwnOptions) {
  Fixture::writeBackup(ExportTest::smallBackup(), folder / "device");
  withoutDisplay();
  start({"-platform", "offscreen", "-session", "12_34", text(folder / "device")});
  EXPECT_TRUE(QTest::qWaitFor([&] { return remembered().lastBackupPath == (folder / "device").string(); }, 20'000))
      << "the backup was never opened";
}

TEST_F(Application, TakesANamelessBackupForNone) {
  start({""});
  EXPECT_TRUE(QTest::qWaitFor([&] { return remembered().lastDestinationPath == home.string(); }, 20'000))
      << "it never opened";
  EXPECT_EQ(program.state(), QProcess::Running);
}

TEST_F(Application, StopsWhereItsTextsAreMissing) {
  fs::copy(TIDEWELL_APPLICATION, folder / "Tidewell");
  program.start(text(folder / "Tidewell"), {});
  ASSERT_TRUE(ends());
  EXPECT_NE(program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1, 0);
  EXPECT_EQ(complaints(), "unable to find bundle named Tidewell_Tidewell\n");
}

}  // namespace
