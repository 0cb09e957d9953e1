#pragma once

#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>

// Runs slow calls on worker threads and brings their results back to the thread
// that it was made on, the interface thread. It outlives whoever uses it; its
// destructor waits for the calls under way.
class BackgroundWork : public QObject {
 public:
  enum class Lane {
    userInitiated,  // somebody waits for it
    utility,        // nobody does: one at a time, at low priority
    inOrder,        // one at a time, in the order they were asked for: what is kept for later
  };

  // As many calls of `userInitiated` run at the same time. A stuck volume holds one thread; the others go on.
  static constexpr int userInitiatedThreads = 8;

  BackgroundWork();
  ~BackgroundWork() override;

  // Calls `work` on a worker thread, then `done` with its future, which is ready, on the interface thread:
  // `get()` returns the result or throws what `work` threw. `done` is dropped when `context` is gone by then.
  template <typename Work, typename Done>
  void run(Lane lane, QObject* context, Work work, Done done) {
    using Result = std::invoke_result_t<Work>;
    const auto task = std::make_shared<std::packaged_task<Result()>>(std::move(work));
    pool(lane).start([this, task, context = QPointer(context), done = std::move(done)]() mutable {
      (*task)();
      post(context, [task, done = std::move(done)]() mutable { done(task->get_future()); });
    });
  }

  // Calls `action` on the interface thread, after everything posted before, unless `context` is gone
  // by then. Any thread.
  void post(QPointer<QObject> context, std::function<void()> action);

 private:
  QThreadPool& pool(Lane lane);

  QThreadPool userInitiated_;
  QThreadPool utility_;
  QThreadPool inOrder_;
};
