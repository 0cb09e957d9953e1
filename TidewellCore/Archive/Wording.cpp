#include "TidewellCore/Archive/Wording.h"

#include <fmt/format.h>

#include <cmath>

#include "TidewellCore/Archive/ChatArchiveStrings.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

constexpr std::int64_t minute = 60;
constexpr std::int64_t hour = 60 * minute;
constexpr std::int64_t day = 24 * hour;

// Six digits are a hand's breadth; nothing is "-0".
double shown(double degrees) {
  constexpr double digits = 1e6;
  return std::round(degrees * digits) / digits + 0.0;
}

}  // namespace

std::string Wording::say(std::string_view section, std::string_view name, ExportTexts::Values values) const {
  const std::string& language = ChatArchiveStrings::forStyle(style).language;
  return ExportTexts::filled(ExportTexts::text(ExportTexts::section(language, section), name), values);
}

std::optional<std::string> Wording::knownName(const Person& person) const {
  if (person.isOwner) return style.youLabel;
  std::string name = nameOf ? line(nameOf(person).value_or("")) : std::string();
  return name.empty() ? std::nullopt : std::optional(std::move(name));
}

std::string Wording::name(const Person& person) const { return knownName(person).value_or(style.unknownSenderLabel); }

std::string Wording::nameInside(const Person& person) const {
  return person.isOwner ? say("messages", "youInside") : name(person);
}

std::string Wording::list(const std::vector<std::string>& entries) const {
  if (entries.empty()) return {};
  if (entries.size() == 1) return entries.front();
  const auto last = entries.end() - 1;
  return say("messages", "listEnd",
             {{"others", fmt::format("{}", fmt::join(entries.begin(), last, ", "))}, {"last", *last}});
}

std::string Wording::option(std::string_view words, const std::vector<std::string>& voters) const {
  const std::string votes = voters.empty() ? "0" : fmt::format("{}: {}", voters.size(), list(voters));
  return fmt::format("{} ({})", words, votes);
}

std::string Wording::timer(std::int64_t seconds) const {
  const auto counted = [&](std::int64_t n, const char* one, const char* several) {
    return n == 1 ? say("messages", one) : say("messages", several, {{"n", std::to_string(n)}});
  };
  if (seconds > day && seconds % day == 0) return counted(seconds / day, "days", "days");
  if (seconds >= hour && seconds % hour == 0) return counted(seconds / hour, "hour", "hours");
  if (seconds >= minute && seconds % minute == 0) return counted(seconds / minute, "minute", "minutes");
  return counted(seconds, "second", "seconds");
}

std::string Wording::price(std::int64_t thousandths, std::string_view currency) const {
  constexpr std::int64_t whole = 1000;
  const std::int64_t part = thousandths % whole;
  std::string text = fmt::format("{} {}", currency, thousandths / whole);
  if (part == 0) return text;
  text += say("messages", "decimalMark");
  return text + (part % 10 == 0 ? fmt::format("{:02}", part / 10) : fmt::format("{:03}", part));
}

std::string Wording::duration(std::int64_t seconds) {
  if (seconds < hour) return fmt::format("{}:{:02}", seconds / minute, seconds % minute);
  return fmt::format("{}:{:02}:{:02}", seconds / hour, seconds % hour / minute, seconds % minute);
}

std::string Wording::text(const Coordinates& coordinates) {
  return fmt::format("{:.6f}, {:.6f}", shown(coordinates.latitude), shown(coordinates.longitude));
}

std::string Wording::line(std::string_view words) { return ReadableText::onOneLine(ReadableText::cleaned(words)); }
