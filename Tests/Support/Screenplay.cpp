#include "Tests/Support/Screenplay.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "Tests/Support/SampleScripts.h"

namespace Fixture {

namespace {

constexpr double appleEpoch = 978'307'200;

class ScreenplayReader {
 public:
  void read(std::string_view line) {
    const std::size_t start = line.find_first_not_of(' ');
    if (start == std::string_view::npos) return;
    line.remove_prefix(start);
    if (line.starts_with("# ")) {
      threads_.push_back({.jid = std::string(line.substr(2)), .lines = {}});
    } else if (line.starts_with("== ")) {
      beginDay(std::string(line.substr(3)));
    } else if (line.starts_with('|')) {
      if (lines(line).empty()) fail(line);
      lines(line).back().text.append("\n").append(line.substr(line.size() > 1 ? 2 : 1));
    } else {
      addLine(line);
    }
  }

  std::vector<ScriptThread> threads() { return std::move(threads_); }

 private:
  [[noreturn]] static void fail(std::string_view line) {
    throw std::runtime_error("This line of a script cannot be read: " + std::string(line));
  }

  std::vector<ScriptLine>& lines(std::string_view line) {
    if (threads_.empty()) fail(line);
    return threads_.back().lines;
  }

  void beginDay(const std::string& text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    if (std::sscanf(text.c_str(), "%d-%u-%u", &year, &month, &day) != 3) fail(text);
    const std::chrono::sys_days date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    day_ = static_cast<double>(std::chrono::sys_seconds(date).time_since_epoch().count()) - appleEpoch;
  }

  // "09:12 Speaker: [medium] text"
  void addLine(std::string_view line) {
    const std::size_t colon = line.find(": ");
    if (line.size() < 8 || line[2] != ':' || line[5] != ' ' || colon == std::string_view::npos) fail(line);
    ScriptLine next{.date = day_ + 60.0 * minuteOf(line), .speaker = std::string(line.substr(6, colon - 6))};
    std::string_view text = line.substr(colon + 2);
    if (text.starts_with('[')) {
      const std::size_t end = text.find(']');
      if (end == std::string_view::npos) fail(line);
      next.medium = text.substr(1, end - 1);
      text.remove_prefix(end + 1);
      if (text.starts_with(' ')) text.remove_prefix(1);
    }
    next.text = text;
    std::vector<ScriptLine>& said = lines(line);
    // Who writes several times within one minute takes a few seconds for each.
    if (!said.empty() && said.back().date >= next.date) next.date = said.back().date + 6;
    said.push_back(std::move(next));
  }

  static int minuteOf(std::string_view line) {
    const auto digit = [&](std::size_t place) { return line[place] - '0'; };
    return (digit(0) * 10 + digit(1)) * 60 + digit(3) * 10 + digit(4);
  }

  std::vector<ScriptThread> threads_;
  double day_ = 0;
};

}  // namespace

std::vector<ScriptThread> parseScreenplay(std::string_view script) {
  ScreenplayReader reader;
  while (!script.empty()) {
    const std::size_t end = script.find('\n');
    reader.read(script.substr(0, end));
    script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
  }
  return reader.threads();
}

std::vector<ScriptCue> cuesInOrder(const std::vector<ScriptThread>& threads) {
  std::vector<ScriptCue> cues;
  for (const ScriptThread& thread : threads) {
    for (const ScriptLine& line : thread.lines) cues.push_back({thread.jid, line});
  }
  std::ranges::stable_sort(cues, {}, [](const ScriptCue& cue) { return cue.line.date; });
  return cues;
}

std::vector<ScriptThread> sampleScreenplay() {
  std::vector<ScriptThread> threads;
  for (const std::string_view script : sampleScripts()) {
    for (ScriptThread& thread : parseScreenplay(script)) threads.push_back(std::move(thread));
  }
  return threads;
}

}  // namespace Fixture
