#include "Tidewell/Session/BackgroundWork.h"

#include <QMetaObject>

BackgroundWork::BackgroundWork() {
  userInitiated_.setMaxThreadCount(userInitiatedThreads);
  utility_.setMaxThreadCount(1);
  utility_.setThreadPriority(QThread::LowPriority);
  inOrder_.setMaxThreadCount(1);
}

BackgroundWork::~BackgroundWork() {
  userInitiated_.waitForDone();
  utility_.waitForDone();
  inOrder_.waitForDone();
}

void BackgroundWork::post(QPointer<QObject> context, std::function<void()> action) {
  QMetaObject::invokeMethod(
      this,
      [context = std::move(context), action = std::move(action)] {
        if (context) action();
      },
      Qt::QueuedConnection);
}

QThreadPool& BackgroundWork::pool(Lane lane) {
  switch (lane) {
    case Lane::userInitiated:
      return userInitiated_;
    case Lane::utility:
      return utility_;
    case Lane::inOrder:
      return inOrder_;
  }
  Q_UNREACHABLE();
}
