#include "Tidewell/Session/BackgroundWork.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QThread>
#include <stdexcept>
#include <vector>

#include "Tests/Application/Session/HeldLane.h"
#include "Tests/Application/Session/WizardScene.h"
#include "Tidewell/Session/CancellationToken.h"

namespace WizardTest {
namespace {

using Lane = BackgroundWork::Lane;
using testing::ElementsAre;

constexpr std::array lanes{Lane::userInitiated, Lane::utility, Lane::inOrder};

testing::AssertionResult until(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return testing::AssertionFailure() << "never came";
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    std::this_thread::yield();
  }
  return testing::AssertionSuccess();
}

class BackgroundWorkTest : public testing::Test {
 protected:
  QObject context;
  BackgroundWork work;
};

TEST_F(BackgroundWorkTest, WorksElsewhereAndAnswersHere) {
  for (const Lane lane : lanes) {
    QThread* workedOn = nullptr;
    QThread* answeredOn = nullptr;
    work.run(
        lane, &context, [] { return QThread::currentThread(); },
        [&](std::future<QThread*> thread) {
          workedOn = thread.get();
          answeredOn = QThread::currentThread();
        });
    EXPECT_EQ(answeredOn, nullptr) << "not before the caller goes back to its events";
    ASSERT_TRUE(until([&] { return answeredOn != nullptr; }));
    EXPECT_EQ(answeredOn, QThread::currentThread());
    EXPECT_NE(workedOn, QThread::currentThread());
  }
}

TEST_F(BackgroundWorkTest, HandsOverWhatWasThrown) {
  std::string message;
  work.run(
      Lane::userInitiated, &context, []() -> int { throw std::runtime_error("no luck"); },
      [&](std::future<int> number) {
        try {
          message = "returned " + std::to_string(number.get());
        } catch (const std::runtime_error& error) {
          message = error.what();
        }
      });
  ASSERT_TRUE(until([&] { return !message.empty(); }));
  EXPECT_EQ(message, "no luck");
}

TEST_F(BackgroundWorkTest, HandsOverWhatCanOnlyBeMoved) {
  int result = 0;
  work.run(
      Lane::utility, &context, [] { return std::make_unique<int>(7); },
      [&](std::future<std::unique_ptr<int>> number) { result = *number.get(); });
  ASSERT_TRUE(until([&] { return result != 0; }));
  EXPECT_EQ(result, 7);
}

TEST_F(BackgroundWorkTest, KeepsTheOrderInTheLanesOfOne) {
  for (const Lane lane : {Lane::utility, Lane::inOrder}) {
    std::vector<int> worked;
    std::vector<int> answered;
    for (int i = 0; i < 50; ++i) {
      work.run(
          lane, &context, [&worked, i] { worked.push_back(i); },
          [&answered, i](const std::future<void>&) { answered.push_back(i); });
    }
    ASSERT_TRUE(until([&] { return answered.size() == 50; }));
    EXPECT_EQ(worked, answered);
    EXPECT_TRUE(std::ranges::is_sorted(worked));
  }
}

TEST_F(BackgroundWorkTest, LanesDoNotWaitForEachOther) {
  for (const Lane held : lanes) {
    const HeldLane busy(work, held, held == Lane::userInitiated ? BackgroundWork::userInitiatedThreads : 1);
    int answered = 0;
    for (const Lane lane : lanes) {
      if (lane == held) continue;
      work.run(
          lane, &context, [] {}, [&](const std::future<void>&) { ++answered; });
    }
    EXPECT_TRUE(until([&] { return answered == 2; }));
  }
}

TEST_F(BackgroundWorkTest, OneStuckCallLeavesTheOthersGoing) {
  const HeldLane stuck(work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  bool answered = false;
  work.run(
      Lane::userInitiated, &context, [] {}, [&](const std::future<void>&) { answered = true; });
  EXPECT_TRUE(until([&] { return answered; }));
}

TEST_F(BackgroundWorkTest, AnswersNobodyWhenTheAskerIsGone) {
  bool answered = false;
  bool othersAnswered = false;
  auto asker = std::make_unique<QObject>();
  HeldLane lane(work, Lane::userInitiated, BackgroundWork::userInitiatedThreads - 1);
  work.run(
      Lane::userInitiated, asker.get(), [] {}, [&](const std::future<void>&) { answered = true; });
  work.post(asker.get(), [&] { answered = true; });
  lane.finishWhatWasAsked();
  asker.reset();
  work.post(&context, [&] { othersAnswered = true; });
  ASSERT_TRUE(until([&] { return othersAnswered; }));
  EXPECT_FALSE(answered);
}

TEST_F(BackgroundWorkTest, PostsInOrderFromAnyThread) {
  std::vector<int> seen;
  bool answered = false;
  work.run(
      Lane::userInitiated, &context,
      [this, &seen, asker = QPointer(&context)] {
        for (int i = 0; i < 100; ++i) work.post(asker, [&seen, i] { seen.push_back(i); });
      },
      [&](const std::future<void>&) { answered = true; });
  ASSERT_TRUE(until([&] { return answered; }));
  EXPECT_EQ(seen.size(), 100U) << "what was posted comes before the answer";
  EXPECT_TRUE(std::ranges::is_sorted(seen));
}

TEST(BackgroundWork, WaitsForItsCallsAtItsEnd) {
  QObject context;
  std::atomic<int> worked = 0;
  bool answered = false;
  {
    BackgroundWork work;
    for (const Lane lane : lanes) {
      for (int i = 0; i < 20; ++i) {
        work.run(
            lane, &context, [&] { ++worked; }, [&](const std::future<void>&) { answered = true; });
      }
    }
  }
  EXPECT_EQ(worked, 60) << "those that had not begun, too: passwords and preferences are kept this way";
  QCoreApplication::processEvents();
  EXPECT_FALSE(answered);
}

TEST(CancellationToken, IsSetForGood) {
  CancellationToken token;
  EXPECT_FALSE(token.isCancelled());
  token.cancel();
  EXPECT_TRUE(token.isCancelled());
  token.cancel();
  EXPECT_TRUE(token.isCancelled());
}

}  // namespace
}  // namespace WizardTest
