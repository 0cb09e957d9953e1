#include "TidewellCLI/ProgressDisplay.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "TidewellCLI/HumanText.h"
#include "TidewellCLI/Output.h"

namespace {

using Phase = ExportProgress::Phase;

// A terminal that knows how to erase a line.
bool canRedraw() {
  const char* kind = std::getenv("TERM");
  return ::isatty(STDERR_FILENO) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

std::size_t terminalWidth() {
  constexpr std::size_t usual = 80;
  winsize size{};
  const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : usual;
}

PhaseClock::Seconds now() { return std::chrono::steady_clock::now().time_since_epoch(); }

std::string bar(double fraction) {
  constexpr std::size_t width = 20;
  const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(width));
  return "[" + std::string(filled, '#') + std::string(width - filled, '-') + "]";
}

}  // namespace

ProgressDisplay::ProgressDisplay(bool isShown) : isShown_(isShown), isTerminal_(canRedraw()) {}

ProgressDisplay::~ProgressDisplay() { clear(); }

void ProgressDisplay::show(const ExportProgress& progress) {
  if (!isShown_) return;
  const bool isNewPhase = phase_ != progress.phase;
  phase_ = progress.phase;
  clock_.take(progress, now());
  if (isTerminal_) {
    // A terminal that wraps a line cannot redraw it.
    printError("\r\033[K" + HumanText::fitted(line(progress), terminalWidth() - 1));
    isDrawn_ = true;
  } else if (isNewPhase) {
    printErrorLine(ExportProgress::title(progress.phase));
  }
}

void ProgressDisplay::clear() {
  if (isDrawn_) printError("\r\033[K");
  isDrawn_ = false;
}

std::string ProgressDisplay::line(const ExportProgress& progress) const {
  std::string text(ExportProgress::title(progress.phase));
  if (progress.phase != Phase::copyingMedia && progress.phase != Phase::writingTranscripts &&
      progress.phase != Phase::verifying) {
    return text;
  }
  text += fmt::format(" {} {} of {}", bar(progress.fraction()), progress.completed, progress.total);
  if (const auto time = clock_.timeLeft(now())) text += " · " + ExportTiming::format(*time);
  if (!progress.currentFileName.empty()) text += " · " + HumanText::safe(progress.currentFileName);
  return text;
}
