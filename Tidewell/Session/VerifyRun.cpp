#include "Tidewell/Session/VerifyRun.h"

#include <utility>

#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/Verification.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

// What a worker needs for one verification; its own, since the wizard may be gone before it ends.
struct Work {
  fs::path destination;
  std::optional<fs::path> backup;
  std::optional<SecretBytes> password;
  std::optional<PasswordKey> passwordKey;
  RunControl control;

  VerifySummary operator()() const {
    VerifyJob job{.destination = destination, .passwordKey = passwordKey ? &*passwordKey : nullptr};
    if (backup && EarlyEnd::isBackup(*backup)) job.backup = backup;
    if (password) job.password = textOf(*password);
    return Verification::run(job, control);
  }
};

const Run* runOf(const ExportState& state) {
  const auto* verifying = std::get_if<Verifying>(&state.work);
  return verifying == nullptr ? nullptr : &verifying->run;
}

}  // namespace

VerifyRun::~VerifyRun() { cancel(); }

void VerifyRun::start() {
  const ExportState& state = session_.state();
  if (!state.canVerify()) return;
  const ExportSession::Batch batch(session_);
  const auto run = std::make_shared<CancellationToken>();
  session_.clearError();
  session_.set(&ExportState::verification, std::nullopt);
  session_.set(&ExportState::work, Verifying{.run = run});
  session_.set(&ExportState::phaseClock, PhaseClock());
  takeProgress(run, {.total = 1});
  awake_ = session_.services().presence.keepAwake(session_.translated("Verifying"));
  session_.inBackground(BackgroundWork::Lane::userInitiated,
                        Work{.destination = state.summary->destination,
                             .backup = state.exportsEverything() ? state.backupURL : std::nullopt,
                             .password = state.unlockedPassword,
                             .passwordKey = state.passwordKey,
                             .control = {.progress = session_.posting(std::function(
                                             [this, run](ExportProgress progress) { takeProgress(run, progress); })),
                                         .isCancelled = ExportSession::checkOf(run)}},
                        [this, run](std::future<VerifySummary> summary) {
                          // The summary was left meanwhile.
                          if (session_.state().isRunning(run)) take(std::move(summary));
                        });
}

void VerifyRun::takeProgress(const Run& run, const ExportProgress& progress) {
  if (!session_.state().isRunning(run)) return;
  PhaseClock clock = session_.state().phaseClock;
  clock.take(progress, session_.services().now().time_since_epoch());
  session_.set(&ExportState::phaseClock, clock);
  session_.set(&ExportState::progress, progress);
}

void VerifyRun::take(std::future<VerifySummary> future) {
  leave();
  try {
    session_.set(&ExportState::verification, future.get());
  } catch (const std::exception& error) {
    if (!TidewellError::isCancellation(error)) session_.present(error);
  }
}

void VerifyRun::cancel() {
  if (const Run* run = runOf(session_.state())) (*run)->cancel();
}

void VerifyRun::leave() {
  awake_.reset();
  if (runOf(session_.state()) == nullptr) return;
  cancel();
  session_.set(&ExportState::work, Idle());
  session_.set(&ExportState::progress, std::nullopt);
}
