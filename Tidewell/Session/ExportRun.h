#pragma once

#include <functional>
#include <future>
#include <memory>

#include "Tidewell/Session/ExportSession.h"

// The export itself: begun, followed, asked about, ended.
class ExportRun {
 public:
  using Then = std::function<void()>;

  explicit ExportRun(ExportSession& session) : session_(session) {}
  ~ExportRun();
  ExportRun(const ExportRun&) = delete;
  ExportRun& operator=(const ExportRun&) = delete;

  // Does nothing unless all that an export needs is chosen. `failed` is called when it ended without a summary.
  void start(const Then& failed);
  // From the summary: the same export once more, which copies what is not there yet.
  void startAgain(const Then& failed);
  // From the refusal of another owner's archive: the same export, told that it is the same person's.
  void startAsSamePerson(const Then& failed);
  void cancel();

  // Whether the window may close: it may not while an export runs that nobody has ended. It is asked then.
  bool mayClose();
  // Asks before the export is ended; only while one runs.
  void ask(StopQuestion question);
  // The answers. `stop` ends the export and returns what it was asked for.
  void keepGoing();
  StopQuestion stop();

 private:
  void run(const Then& failed, bool isSamePerson = false);
  void takeProgress(const ExportProgress& progress);
  void take(std::future<ExportSummary> summary, const Then& failed);
  void tellWhoIsAway(const std::string& title, const std::string& text) const;

  ExportSession& session_;
  std::shared_ptr<void> awake_;  // while an export runs
};
