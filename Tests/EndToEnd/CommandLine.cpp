#include "Tests/EndToEnd/CommandLine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <thread>

namespace {

namespace fs = std::filesystem;

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    readEnd = ends[0];
    writeEnd = ends[1];
  }
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

// Appends what is there to read; false at the end.
bool readSome(int file, std::string& text) {
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(file, buffer.data(), buffer.size());
  if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

// Reads both streams until they end; `seen` is told after each piece of errors.
void readBoth(int output, int errors, Finished& finished, const std::function<void()>& seen) {
  std::array<pollfd, 2> files{{{output, POLLIN, 0}, {errors, POLLIN, 0}}};
  while (files[0].fd >= 0 || files[1].fd >= 0) {
    ::poll(files.data(), files.size(), -1);
    if (files[0].revents != 0 && !readSome(output, finished.output)) files[0].fd = -1;
    if (files[1].revents != 0 && !readSome(errors, finished.errors)) files[1].fd = -1;
    seen();
  }
}

int waitFor(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

Finished collect(pid_t child, const Pipe& output, const Pipe& errors, const std::function<void(Finished&)>& seen) {
  Finished finished;
  ::close(output.writeEnd);
  ::close(errors.writeEnd);
  readBoth(output.readEnd, errors.readEnd, finished, [&] { seen(finished); });
  ::close(output.readEnd);
  ::close(errors.readEnd);
  finished.exitCode = waitFor(child);
  return finished;
}

// The third field of proc_pid_stat(5), after a name in parentheses.
char stateOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const auto name = text.rfind(')');
  return name == std::string::npos ? '?' : text.at(name + 2);
}

// Half a second without work tells a wait from a pause.
void waitUntilAsleep(pid_t process) {
  constexpr int enough = 50;
  for (int asleep = 0; asleep < enough && stateOf(process) != 'Z';) {
    asleep = stateOf(process) == 'S' ? asleep + 1 : 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

}  // namespace

Json::Object Finished::json() const {
  EXPECT_TRUE(output.ends_with("}\n")) << output << errors;
  EXPECT_EQ(output.find('\n'), output.size() - 1) << "more than one line";
  const std::optional<Json> document = Json::parse(output);
  const auto* object = document ? document->as<Json::Object>() : nullptr;
  EXPECT_NE(object, nullptr) << output;
  return object == nullptr ? Json::Object() : *object;
}

CommandLine::CommandLine() {
  for (const auto& [variable, name] : {std::pair{"HOME", "home"}, std::pair{"TMPDIR", "temporary"}}) {
    fs::create_directory(folder_ / name);
    set(variable, (folder_ / name).string());
  }
}

std::vector<std::string> CommandLine::environment() const {
  std::vector<std::string> environment;
  for (const auto& [variable, value] : variables_) environment.push_back(variable + "=" + value);
  return environment;
}

void CommandLine::become(const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{TIDEWELL_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = environment();
  constexpr unsigned longestRun = 60;  // seconds; a run that hangs fails instead
  ::alarm(longestRun);
  if (::chdir(folder_.path().c_str()) == 0) {
    ::execve(TIDEWELL_PROGRAM, pointers(words).data(), pointers(variables).data());
  }
  ::_exit(127);
}

pid_t CommandLine::start(const std::vector<std::string>& arguments, int input, int output, int errors) const {
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    become(arguments);
  }
  ::close(input);
  return child;
}

Finished CommandLine::run(const std::vector<std::string>& arguments, const std::string& input) const {
  const Pipe in, output, errors;
  const pid_t child = start(arguments, in.readEnd, output.writeEnd, errors.writeEnd);
  EXPECT_EQ(::write(in.writeEnd, input.data(), input.size()), static_cast<ssize_t>(input.size()));
  ::close(in.writeEnd);
  return collect(child, output, errors, [](Finished&) {});
}

Finished CommandLine::interrupt(const std::vector<std::string>& arguments, const std::string& text, int signal) const {
  return runAnd(arguments, text, [signal](pid_t child) { ::kill(child, signal); });
}

Finished CommandLine::runAnd(const std::vector<std::string>& arguments, const std::string& text,
                             const std::function<void(pid_t)>& action) const {
  const Pipe output, errors;
  const pid_t child = start(arguments, ::open("/dev/null", O_RDONLY | O_CLOEXEC), output.writeEnd, errors.writeEnd);
  bool isDone = false;
  return collect(child, output, errors, [&](Finished& finished) {
    if (isDone || finished.errors.find(text) == std::string::npos) return;
    isDone = true;
    action(child);
  });
}

bool CommandLine::kill(const std::vector<std::string>& arguments, std::chrono::duration<double> after) const {
  const pid_t child = ::fork();
  if (child == 0) {
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ::dup2(::open("/dev/null", O_RDWR | O_CLOEXEC), file);
    }
    become(arguments);
  }
  std::this_thread::sleep_for(after);
  ::kill(child, SIGKILL);
  return waitFor(child) == -SIGKILL;
}

Finished CommandLine::signalAfter(const std::vector<std::string>& arguments, std::chrono::duration<double> after,
                                  int signal) const {
  const Pipe output, errors;
  const pid_t child = start(arguments, ::open("/dev/null", O_RDONLY | O_CLOEXEC), output.writeEnd, errors.writeEnd);
  // It means this process alone, also when its number is another's by then.
  const auto process = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
  std::thread sender([process, after, signal] {
    std::this_thread::sleep_for(after);
    ::syscall(SYS_pidfd_send_signal, process, signal, nullptr, 0);
  });
  Finished finished = collect(child, output, errors, [](Finished&) {});
  sender.join();
  ::close(process);
  return finished;
}

Finished CommandLine::interruptWaiting(const std::vector<std::string>& arguments, int signal) const {
  const Pipe output, errors;
  const pid_t child = start(arguments, ::dup(STDIN_FILENO), output.writeEnd, errors.writeEnd);
  waitUntilAsleep(child);
  ::kill(child, signal);
  return collect(child, output, errors, [](Finished&) {});
}

Finished CommandLine::runOnTerminal(const std::vector<std::string>& arguments, const std::string& typed,
                                    const std::function<void(pid_t, int)>& asked) const {
  int terminal = -1;
  winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, &size);
  if (child < 0) throw std::runtime_error("this machine has no pseudo-terminals");
  if (child == 0) become(arguments);
  Finished finished;
  bool isTyped = false;
  while (readSome(terminal, finished.output)) {
    if (isTyped || finished.output.find(": ") == std::string::npos) continue;
    // Typed as soon as something is asked, as a person would.
    isTyped = true;
    if (asked) asked(child, terminal);
    EXPECT_EQ(::write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
  }
  ::close(terminal);
  finished.exitCode = waitFor(child);
  return finished;
}

int CommandLine::runWithoutStreams(const std::vector<std::string>& arguments, const std::vector<int>& closed) const {
  const pid_t child = ::fork();
  if (child == 0) {
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      ::dup2(::open("/dev/full", O_RDWR | O_CLOEXEC), file);
    for (const int file : closed) ::close(file);
    become(arguments);
  }
  return waitFor(child);
}

std::vector<std::string> CommandLine::temporaryFiles() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder_ / "temporary")) names.push_back(entry.path().filename());
  return names;
}
