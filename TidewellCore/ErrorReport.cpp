#include "TidewellCore/ErrorReport.h"

#include <new>
#include <string_view>

#include "TidewellCore/TidewellError.h"

namespace {

constexpr const char* passedOn = "ioFailure";

// The standard library's text without what only programmers read.
std::string plainText(const std::exception& error) {
  constexpr std::string_view prefix = "filesystem error: ";
  std::string_view text = error.what();
  if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
  return std::string(text);
}

}  // namespace

ErrorReport ErrorReport::of(const std::exception& error) {
  if (const auto* known = dynamic_cast<const TidewellError*>(&error)) {
    return {.caseName = std::string(known->caseName()),
            .errorDescription = known->errorDescription(),
            .recoverySuggestion = known->recoverySuggestion()};
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return {.caseName = passedOn, .errorDescription = "This computer has not enough free memory."};
  }
  return {.caseName = passedOn, .errorDescription = plainText(error)};
}
