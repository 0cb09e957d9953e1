#include "Tidewell/Session/FolderBrowser.h"

#include <gmock/gmock.h>

#include <QCoreApplication>

#include "Tests/Application/Session/HeldLane.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace WizardTest {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderBrowserTest : public testing::Test {
 protected:
  FolderBrowserTest() {
    for (const char* name : {"home/Chats/2025", "home/Chats/2026", "home/Empty", "home/Music"}) {
      fs::create_directories(folder / name);
    }
    QObject::connect(&browser, &FolderBrowser::chosen, [this](const fs::path& each) { chosen.push_back(each); });
  }

  // Waits for what was asked for.
  void settle() {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while ((browser.state().isReading || browser.state().places.empty()) && std::chrono::steady_clock::now() < end) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    EXPECT_FALSE(browser.state().isReading);
  }
  void open(const fs::path& at) {
    browser.open(at);
    settle();
  }
  const fs::path& shown() const { return browser.state().listing.folder; }

  Fixture::TemporaryDirectory folder;
  fs::path home = folder / "home";
  BackgroundWork work;
  FolderBrowser browser{work, home};
  std::vector<fs::path> chosen;
};

TEST_F(FolderBrowserTest, ChoosesTheFolderThatItShowsEmptyOrNot) {
  open(home);
  EXPECT_THAT(browser.state().listing.names, ElementsAre("Chats", "Empty", "Music"));
  browser.choose();
  open(home / "Empty");
  EXPECT_THAT(browser.state().listing.names, IsEmpty());
  browser.choose();
  EXPECT_THAT(chosen, ElementsAre(home, home / "Empty"));
}

TEST_F(FolderBrowserTest, OpensAtTheNearestFolderThatExists) {
  open(home / "Chats" / "gone" / "for good");
  EXPECT_EQ(shown(), home / "Chats");
}

TEST_F(FolderBrowserTest, WalksDownAndUpAgain) {
  open(home);
  browser.enter(0);
  settle();
  EXPECT_EQ(shown(), home / "Chats");
  browser.enter(1);
  settle();
  EXPECT_EQ(shown(), home / "Chats" / "2026");
  browser.enter(0);
  settle();
  EXPECT_EQ(shown(), home / "Chats" / "2026") << "there is no such row";
  browser.goUp();
  settle();
  EXPECT_EQ(shown(), home / "Chats");
  EXPECT_EQ(browser.state().current, 1U) << "where one came from";
}

TEST_F(FolderBrowserTest, StopsAtTheRoot) {
  open("/");
  browser.goUp();
  EXPECT_FALSE(browser.state().isReading);
  EXPECT_EQ(shown(), "/");
}

TEST_F(FolderBrowserTest, GoesToPlaces) {
  open(home / "Chats");
  ASSERT_FALSE(browser.state().places.empty());
  browser.goToPlace(0);
  settle();
  EXPECT_EQ(shown(), home);
  EXPECT_EQ(browser.state().current, 0U);
}

TEST_F(FolderBrowserTest, GoesWhereSomebodyTypes) {
  open(home);
  browser.goTo("~/Music/");
  settle();
  EXPECT_EQ(shown(), home / "Music");
  browser.goTo("../Chats");
  settle();
  EXPECT_EQ(shown(), home / "Chats");
  browser.goTo("nowhere");
  settle();
  EXPECT_EQ(shown(), home / "Chats");
  EXPECT_EQ(browser.state().pathFault, FolderFault::noSuchFolder);
  browser.goUp();
  EXPECT_EQ(browser.state().pathFault, std::nullopt);
  settle();
}

TEST_F(FolderBrowserTest, ShowsTheFolderThatItMade) {
  open(home / "Empty");
  browser.create("Fresh");
  settle();
  EXPECT_EQ(shown(), home / "Empty" / "Fresh");
  browser.choose();
  EXPECT_THAT(chosen, ElementsAre(home / "Empty" / "Fresh"));
}

TEST_F(FolderBrowserTest, StaysWhereNoFolderCouldBeMade) {
  open(home);
  browser.create("Chats");
  settle();
  EXPECT_EQ(shown(), home);
  EXPECT_EQ(browser.state().nameFault, FolderFault::nameTaken);
  browser.forgetNameFault();
  EXPECT_EQ(browser.state().nameFault, std::nullopt);
}

TEST_F(FolderBrowserTest, WaitsForTheFolderThatWasAskedForBeforeItChooses) {
  open(home);
  browser.enter(0);
  browser.choose();
  EXPECT_THAT(chosen, IsEmpty());
  settle();
  EXPECT_THAT(chosen, ElementsAre(home / "Chats"));
}

TEST_F(FolderBrowserTest, ChoosesNothingWhenTheTypedFolderIsNotThere) {
  open(home);
  browser.goTo("/nowhere");
  browser.choose();
  settle();
  EXPECT_THAT(chosen, IsEmpty());
  EXPECT_EQ(browser.state().pathFault, FolderFault::noSuchFolder);
}

TEST_F(FolderBrowserTest, NeverWaitsForAVolume) {
  open(home);
  {
    const HeldLane held(work, BackgroundWork::Lane::userInitiated, BackgroundWork::userInitiatedThreads);
    browser.enter(0);
    EXPECT_TRUE(browser.state().isReading);
    EXPECT_EQ(shown(), home) << "until the next one was read";
    browser.enter(2);
  }
  settle();
  EXPECT_EQ(shown(), home / "Music") << "what was asked for last";
}

TEST_F(FolderBrowserTest, IsTheSameAgainAfterItWasClosed) {
  open(home);
  browser.enter(0);
  browser.choose();
  browser.close();
  EXPECT_EQ(browser.state(), FolderBrowserState());
  open(home / "Music");
  EXPECT_EQ(shown(), home / "Music");
  EXPECT_THAT(chosen, IsEmpty());
}

}  // namespace
}  // namespace WizardTest
