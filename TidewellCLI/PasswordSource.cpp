#include "TidewellCLI/PasswordSource.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "TidewellCLI/Arguments.h"
#include "TidewellCLI/Interruption.h"
#include "TidewellCLI/Output.h"
#include "TidewellCore/Platform/Bytes.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t longestLine = 64 << 10;

// Reads byte by byte, so that nothing behind the line is taken and no buffer keeps a copy.
SecretBytes readFirstLine(int file, const fs::path& name) {
  SecretBytes line;
  line.reserve(256);
  throwIfCancelled(Interruption::check());  // the signal may have come before there was a read to end
  for (std::uint8_t byte = 0; line.size() < longestLine;) {
    const ssize_t count = ::read(file, &byte, 1);
    if (count < 0 && errno == EINTR) {
      throwIfCancelled(Interruption::check());
      continue;
    }
    if (count < 0) throw fs::filesystem_error("Could not read the password", name, {errno, std::generic_category()});
    if (count == 0 || byte == '\n') break;
    line.push_back(byte);
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

SecretBytes readFromFile(const fs::path& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) throwIfCancelled(Interruption::check());  // a FIFO waits for its writer
  if (file < 0) throw fs::filesystem_error("Could not open the password file", path, {errno, std::generic_category()});
  const std::shared_ptr<void> closer(nullptr, [file](void*) { ::close(file); });
  return readFirstLine(file, path);
}

// How the terminal was before something was hidden, and how it is meanwhile.
termios shown{};
termios hidden{};
std::atomic<bool> isHidden = false;

// On Ctrl-Z. The shell is to have its terminal as it was, and after "fg" what is typed is a password again.
void stopShowing(int /*signal*/) {
  const int before = errno;
  ::tcsetattr(STDIN_FILENO, TCSANOW, &shown);
  ::kill(::getpid(), SIGSTOP);
  if (isHidden) ::tcsetattr(STDIN_FILENO, TCSANOW, &hidden);
  errno = before;
}

// Keeps the terminal from showing what is typed while it lives.
class HiddenInput {
 public:
  HiddenInput() {
    ::sigaction(SIGTSTP, nullptr, &before_);
    if (::tcgetattr(STDIN_FILENO, &shown) != 0) return;
    hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    struct sigaction stopping {};
    stopping.sa_handler = stopShowing;
    stopping.sa_flags = SA_RESTART;
    if (before_.sa_handler != SIG_IGN) ::sigaction(SIGTSTP, &stopping, nullptr);
    isHidden = true;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
  }
  ~HiddenInput() {
    ::sigaction(SIGTSTP, &before_, nullptr);
    showTyping();
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;

 private:
  struct sigaction before_ {};
};

SecretBytes askOnTerminal() {
  // Hidden before it is asked for: what is typed at the first sight of the question counts.
  const HiddenInput hiding;
  std::fputs("Password of this backup: ", stderr);
  std::fflush(stderr);
  const std::shared_ptr<void> lineBreak(nullptr, [](void*) { printErrorLine(""); });
  return readFirstLine(STDIN_FILENO, "the terminal");
}

}  // namespace

void PasswordSource::addOptions(CLI::App& command) {
  CLI::Option* fileOption = Arguments::addPath(command, "--password-file", file,
                                               "Read the backup's password from the first line of this file");
  command.add_flag("--password-stdin", fromStandardInput, "Read the password from the first line of standard input")
      ->excludes(fileOption);
}

SecretBytes PasswordSource::read(bool isEncrypted) const {
  if (!isEncrypted) return {};
  if (!file.empty()) return readFromFile(file);
  if (fromStandardInput) return readFirstLine(STDIN_FILENO, "standard input");
  return ::isatty(STDIN_FILENO) == 1 ? askOnTerminal() : SecretBytes();
}

void showTyping() noexcept {
  if (isHidden.exchange(false)) ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
}

std::optional<std::string_view> passwordText(const SecretBytes& password) {
  if (password.empty()) return std::nullopt;
  return textOf(password);
}
