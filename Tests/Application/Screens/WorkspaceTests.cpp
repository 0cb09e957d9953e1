#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>
#include <fstream>

#include "Tests/Support/TemporaryDirectory.h"
#include "Tidewell/Screens/DesktopWorkspace.h"

namespace {

namespace fs = std::filesystem;

// A desktop whose opener ends as the test wants; it writes down what it was to open.
class WorkspaceTest : public testing::Test {
 protected:
  void makeOpener(const std::string& ending) {
    const fs::path opener = folder / "xdg-open";
    std::ofstream(opener) << "#!/bin/sh\necho \"$1\" >'" << (folder / "opened").string() << "'\n"
                          << "echo chatter >&2\n"
                          << ending << "\n";
    fs::permissions(opener, fs::perms::owner_all);
    qputenv("PATH", QByteArray(folder.path().c_str()) + ":" + path);
  }
  ~WorkspaceTest() override { qputenv("PATH", path); }

  void openFile() {
    workspace.openFile("/kept/R&D 100%/index.html", [this] { ++failures; });
  }
  bool isOpened() const { return fs::exists(folder / "opened") && fs::file_size(folder / "opened") > 0; }

  const QByteArray path = qgetenv("PATH");
  Fixture::TemporaryDirectory folder;
  const Workspace workspace = DesktopWorkspace::make();
  int failures = 0;
};

TEST_F(WorkspaceTest, OpensAFileWithTheDesktopsOpener) {
  makeOpener("exit 0");
  openFile();
  ASSERT_TRUE(QTest::qWaitFor([&] { return isOpened(); }));
  QTest::qWait(100);
  EXPECT_EQ(failures, 0);
  std::string opened;
  std::getline(std::ifstream(folder / "opened") >> std::ws, opened);
  EXPECT_EQ(opened, "file:///kept/R&D%20100%25/index.html");
}

TEST_F(WorkspaceTest, TellsThatTheOpenerFailed) {
  makeOpener("exit 4");
  openFile();
  EXPECT_TRUE(QTest::qWaitFor([&] { return failures == 1; }));
}

TEST_F(WorkspaceTest, TellsThatTheOpenerDied) {
  makeOpener("kill -9 $$");
  openFile();
  EXPECT_TRUE(QTest::qWaitFor([&] { return failures == 1; }));
}

TEST_F(WorkspaceTest, DoesNotWaitForWhatWasOpened) {
  makeOpener("sleep 0.5");
  QElapsedTimer timer;
  timer.start();
  openFile();
  EXPECT_LT(timer.elapsed(), 400);
  ASSERT_TRUE(QTest::qWaitFor([&] { return isOpened(); }));
  QTest::qWait(1'000);
  EXPECT_EQ(failures, 0);
}

}  // namespace
