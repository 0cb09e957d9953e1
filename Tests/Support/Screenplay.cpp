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

// What stands before the first separator and behind it.
std::pair<std::string, std::string> cutAt(std::string_view text, std::string_view separator) {
  const std::size_t end = text.find(separator);
  if (end == std::string_view::npos) return {std::string(text), ""};
  return {std::string(text.substr(0, end)), std::string(text.substr(end + separator.size()))};
}

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
    } else if (std::string_view("|>+=~!").find(line[0]) != std::string_view::npos) {
      if (lines(line).empty()) fail(line);
      hang(line[0], line.substr(std::min<std::size_t>(line.size(), 2)), lines(line).back());
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

  // What belongs to the line before it.
  static void hang(char sign, std::string_view words, ScriptLine& line) {
    const auto [first, rest] = cutAt(words, sign == '+' ? " " : ": ");
    if (sign == '|') line.text.append("\n").append(words);
    if (sign == '>') line.answer = {.speaker = first, .words = rest};
    if (sign == '+') line.reactions.push_back({.emoji = first, .people = rest});
    if (sign == '=') line.choices.push_back({.words = first, .rest = rest});
    if (sign == '~') line.preview = words;
    if (sign == '!') line.marks = namesIn(words);
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

std::vector<std::string> namesIn(std::string_view list) {
  std::vector<std::string> names;
  for (std::string rest(list); !rest.empty();) {
    auto [first, others] = cutAt(rest, ", ");
    names.push_back(std::move(first));
    rest = std::move(others);
  }
  return names;
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
  for (const auto scripts : {scriptsFromHome(), scriptsFromAbroad()}) {
    for (const std::string_view script : scripts) {
      for (ScriptThread& thread : parseScreenplay(script)) threads.push_back(std::move(thread));
    }
  }
  return threads;
}

}  // namespace Fixture
