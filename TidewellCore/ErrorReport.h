#pragma once

#include <exception>
#include <optional>
#include <string>

// A failure as it is shown to people, whoever reported it.
struct ErrorReport {
  std::string caseName;  // the name of the TidewellError case; "ioFailure" for what was passed on
  std::string errorDescription;
  std::optional<std::string> recoverySuggestion;

  static ErrorReport of(const std::exception& error);

  bool operator==(const ErrorReport&) const = default;
};
