#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/ExportTexts.h"
#include "TidewellCore/TranscriptStyle.h"

// How an export speaks: the texts of its language, filled with names and numbers.
struct Wording {
  TranscriptStyle style;
  // The name of a person as it is shown, absent for somebody whom nobody knows; never asked for the owner.
  std::function<std::optional<std::string>(const Person&)> nameOf = {};

  // A text of the tables with its places filled.
  std::string say(std::string_view section, std::string_view name, ExportTexts::Values values = {}) const;

  // On one line: "You", "Ana"; absent for somebody whom nobody knows.
  std::optional<std::string> knownName(const Person& person) const;
  // The same, "Unknown" for that one.
  std::string name(const Person& person) const;
  // The same within a sentence: "you", "Ana".
  std::string nameInside(const Person& person) const;

  // "Ana, Ben and Carla"
  std::string list(const std::vector<std::string>& entries) const;
  // The words of a poll's option with those who voted for it: "Monday (2: You and Ben)".
  std::string option(std::string_view words, const std::vector<std::string>& voters) const;

  // How long messages are kept: "24 hours", "7 days".
  std::string timer(std::int64_t seconds) const;
  // "EUR 19.99"
  std::string price(std::int64_t thousandths, std::string_view currency) const;

  // How long something lasted, in any language: "0:07", "1:02:03".
  static std::string duration(std::int64_t seconds);
  // "35.638504, -78.876053", in any language.
  static std::string text(const Coordinates& coordinates);
  // Cleaned, on one line.
  static std::string line(std::string_view words);
};
