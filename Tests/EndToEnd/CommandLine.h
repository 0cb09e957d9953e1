#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Platform/Json.h"

// What a run of the program left.
struct Finished {
  int exitCode = -1;  // negative when a signal ended it
  std::string output;
  std::string errors;

  // Standard output as one JSON object; fails the test when it is anything else.
  Json::Object json() const;
};

// Runs the built `tidewell` as a user would: in a folder of its own, with its
// own home and temporary folder, and nothing else of this process's environment.
class CommandLine {
 public:
  CommandLine();

  // Sets a variable of the program's environment for the runs that follow.
  void set(const std::string& variable, const std::string& value) { variables_[variable] = value; }

  // `input` is all that standard input holds.
  Finished run(const std::vector<std::string>& arguments, const std::string& input = {}) const;
  // Calls `action` with the program's process when its errors hold `text`.
  Finished runAnd(const std::vector<std::string>& arguments, const std::string& text,
                  const std::function<void(pid_t)>& action) const;
  // Sends `signal` then.
  Finished interrupt(const std::vector<std::string>& arguments, const std::string& text, int signal) const;
  // Kills the program so long after its start; returns whether it was still running then.
  bool kill(const std::vector<std::string>& arguments, std::chrono::duration<double> after) const;
  // Sends `signal` so long after the program's start, whatever it does then.
  Finished signalAfter(const std::vector<std::string>& arguments, std::chrono::duration<double> after,
                       int signal) const;
  // Sends `signal` when the program has come to wait for something.
  Finished interruptWaiting(const std::vector<std::string>& arguments, int signal) const;
  // On a terminal of its own, with `typed` as the keys; output and errors come together.
  // `asked` is called before, with the process and its terminal.
  Finished runOnTerminal(const std::vector<std::string>& arguments, const std::string& typed,
                         const std::function<void(pid_t process, int terminal)>& asked = {}) const;

  // With these of the standard streams closed, and the others at /dev/full; returns the exit code.
  int runWithoutStreams(const std::vector<std::string>& arguments, const std::vector<int>& closed) const;

  std::filesystem::path operator/(const std::string& name) const { return folder_ / name; }
  // What the program left in its temporary folder.
  std::vector<std::string> temporaryFiles() const;

 private:
  std::vector<std::string> environment() const;
  // Starts the program with these as its streams; closes `input` here.
  pid_t start(const std::vector<std::string>& arguments, int input, int output, int errors) const;
  [[noreturn]] void become(const std::vector<std::string>& arguments) const;

  Fixture::TemporaryDirectory folder_;
  std::map<std::string, std::string> variables_{{"TZ", "UTC"}, {"LC_ALL", "C"}, {"TERM", "xterm"}};
};
