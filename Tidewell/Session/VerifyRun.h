#pragma once

#include <future>

#include "Tidewell/Session/ExportSession.h"

// The verification of what was just exported: begun, followed, ended. The summary stays on the screen meanwhile.
class VerifyRun {
 public:
  explicit VerifyRun(ExportSession& session) : session_(session) {}
  ~VerifyRun();
  VerifyRun(const VerifyRun&) = delete;
  VerifyRun& operator=(const VerifyRun&) = delete;

  // Does nothing but on the summary, when nothing else is done. An export of the whole backup is compared with it, as
  // far as that is still there.
  void start();
  // What was found until then is dropped.
  void cancel();
  // The summary is left: nobody waits for the end any more.
  void leave();

 private:
  void takeProgress(const Run& run, const ExportProgress& progress);
  void take(std::future<VerifySummary> summary);

  ExportSession& session_;
  std::shared_ptr<void> awake_;  // while a verification runs
};
