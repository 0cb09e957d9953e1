#include "Tidewell/Session/ExportRun.h"

#include <chrono>
#include <utility>

#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

// Who started a shorter one is still there.
constexpr std::chrono::duration<double> longExport = std::chrono::minutes(1);

// What a worker needs for one export; its own, since the wizard may be gone before it ends.
struct Work {
  fs::path backup;
  fs::path destination;
  ExportOptions options;
  Selection selection;
  std::optional<SecretBytes> password;
  std::optional<PasswordKey> passwordKey;
  bool isSamePerson = false;
  TranscriptStyle style;
  RunControl control;

  ExportSummary operator()() const {
    const auto text = password ? std::optional(textOf(*password)) : std::nullopt;
    const ExportJob job{.backup = backup,
                        .destination = destination,
                        .options = options,
                        .selection = selection,
                        .password = text,
                        .passwordKey = passwordKey ? &*passwordKey : nullptr,
                        .isSamePerson = isSamePerson};
    return Exporter{.transcriptStyle = style}.exportBackup(job, control);
  }
};

MessageFormats formatsOf(const ExportState& state) {
  if (!state.exportMessageFiles) return {};
  return {MessageFormat::json, MessageFormat::csv};
}

const Run* runOf(const ExportState& state) {
  const auto* exporting = std::get_if<Exporting>(&state.work);
  return exporting == nullptr ? nullptr : &exporting->run;
}

}  // namespace

ExportRun::~ExportRun() { cancel(); }

void ExportRun::start(const Then& failed) {
  if (session_.state().step == WizardStep::options && session_.state().canExport()) run(failed);
}

void ExportRun::startAgain(const Then& failed) {
  if (session_.state().step == WizardStep::done && session_.state().canExport()) run(failed);
}

void ExportRun::startAsSamePerson(const Then& failed) {
  if (session_.state().offersSamePerson() && session_.state().canExport()) run(failed, true);
}

void ExportRun::run(const Then& failed, bool isSamePerson) {
  const ExportSession::Batch batch(session_);
  const ExportState& state = session_.state();
  const auto run = std::make_shared<CancellationToken>();
  const Date now = session_.services().now();
  session_.clearError();
  session_.set(&ExportState::summary, std::nullopt);
  session_.set(&ExportState::verification, std::nullopt);
  session_.set(&ExportState::work, Exporting{.run = run});
  session_.set(&ExportState::exportStartedAt, now);
  session_.set(&ExportState::phaseClock, PhaseClock());
  takeProgress({.total = 1});
  session_.set(&ExportState::step, WizardStep::exporting);
  awake_ = session_.services().presence.keepAwake(session_.translated("Exporting chats and media"));
  session_.inBackground(
      BackgroundWork::Lane::userInitiated,
      Work{.backup = *state.backupURL,
           .destination = *state.destinationURL,
           .options = {.includedKinds = state.includedKinds,
                       .exportTranscripts = state.exportTranscripts,
                       .formats = formatsOf(state)},
           .selection = state.chatChoice.selection(*state.scanResult),
           .password = state.unlockedPassword,
           .passwordKey = state.passwordKey,
           .isSamePerson = isSamePerson,
           .style = session_.texts().transcriptStyle(),
           .control = {.progress =
                           session_.posting(std::function([this](ExportProgress progress) { takeProgress(progress); })),
                       .isCancelled = ExportSession::checkOf(run)}},
      [this, failed](std::future<ExportSummary> summary) { take(std::move(summary), failed); });
}

void ExportRun::takeProgress(const ExportProgress& progress) {
  PhaseClock clock = session_.state().phaseClock;
  clock.take(progress, session_.services().now().time_since_epoch());
  session_.set(&ExportState::phaseClock, clock);
  session_.set(&ExportState::progress, progress);
}

void ExportRun::take(std::future<ExportSummary> future, const Then& failed) {
  awake_.reset();
  session_.set(&ExportState::stopQuestion, StopQuestion::none);
  session_.set(&ExportState::work, Idle());
  try {
    const ExportSummary summary = future.get();
    session_.set(&ExportState::summary, summary);
    session_.set(&ExportState::step, WizardStep::done);
    tellWhoIsAway(session_.translated("Export finished"), PathText::text(summary.destination));
  } catch (const std::exception& error) {
    session_.present(error);
    session_.set(&ExportState::step, WizardStep::options);
    if (!TidewellError::isCancellation(error)) {
      tellWhoIsAway(session_.translated("Something went wrong"), *session_.state().errorMessage);
    }
    failed();
  }
}

void ExportRun::tellWhoIsAway(const std::string& title, const std::string& text) const {
  const Presence& presence = session_.services().presence;
  const auto elapsed = session_.services().now() - *session_.state().exportStartedAt;
  if (elapsed > longExport && !presence.isWindowInFront()) presence.notify(title, text);
}

void ExportRun::cancel() {
  if (const Run* run = runOf(session_.state())) (*run)->cancel();
}

bool ExportRun::mayClose() {
  const Run* run = runOf(session_.state());
  if (run == nullptr || (*run)->isCancelled()) return true;
  ask(StopQuestion::close);
  return false;
}

void ExportRun::ask(StopQuestion question) {
  const Run* run = runOf(session_.state());
  if (run != nullptr && !(*run)->isCancelled()) session_.set(&ExportState::stopQuestion, question);
}

void ExportRun::keepGoing() { session_.set(&ExportState::stopQuestion, StopQuestion::none); }

StopQuestion ExportRun::stop() {
  const StopQuestion asked = session_.state().stopQuestion;
  if (asked == StopQuestion::none) return asked;
  cancel();
  keepGoing();
  return asked;
}
