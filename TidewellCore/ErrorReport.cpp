#include "TidewellCore/ErrorReport.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/TemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* passedOn = "ioFailure";

// What the core says was tried; for the standard library, which names its own
// functions there, by how its text begins.
std::string attemptOf(const fs::filesystem_error& error) {
  constexpr std::string_view prefix = "filesystem error: ";
  constexpr std::array<std::pair<std::string_view, const char*>, 4> functions{
      {{"cannot create director", "Could not create the folder"},
       {"cannot rename", "Could not rename"},
       {"cannot remove", "Could not remove"},
       {"directory iterator", "Could not read the folder"}}};
  std::string_view text = error.what();
  if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
  for (const auto& [beginning, attempt] : functions) {
    if (text.starts_with(beginning)) return attempt;
  }
  const bool isOurs = !text.empty() && text.front() >= 'A' && text.front() <= 'Z';
  return isOurs ? std::string(text.substr(0, text.find(": "))) : "Could not use";
}

// Working files, working folders and what an export remembers: names that nobody knows.
bool isOurOwn(std::string_view name) { return name.starts_with(".tidewell-") || TemporaryFolder::isName(name); }

// The folder that holds the outermost of them on the way to `path`, when there is one.
std::optional<fs::path> placeOfOurOwn(const fs::path& path) {
  fs::path above;
  for (const fs::path& part : path) {
    if (isOurOwn(PathText::text(part))) return above;
    above /= part;
  }
  return std::nullopt;
}

// Where such a file stands says more than its name.
std::string placeOf(const fs::filesystem_error& error) {
  const fs::path& path = placeOfOurOwn(error.path1()) && !error.path2().empty() ? error.path2() : error.path1();
  if (path.empty()) return {};
  if (const auto place = placeOfOurOwn(path)) return fmt::format(" in “{}”", PathText::text(*place));
  return fmt::format(" “{}”", PathText::text(path));
}

std::string causeOf(const std::error_code& code) {
  switch (code.value()) {
    case EACCES:
    case EPERM:
      return "permission is missing";
    case ENOENT:
      return "it is not there";
    case ENOTDIR:
      return "there is no such folder";
    case EISDIR:
      return "it is a folder";
    case ENOSPC:
    case EDQUOT:
      return "the disk is full";
    case EFBIG:
      return "a file may not be that large here";
    case EROFS:
      return "the disk can only be read";
    case EIO:
      return "the disk reports an error";
    case ENAMETOOLONG:
      return "the name is too long for the disk";
    default:
      return code.message();
  }
}

// Ours either begin so and leave the cause to the system, or tell it themselves.
std::string sentenceOf(const fs::filesystem_error& error) {
  const std::string attempt = attemptOf(error);
  if (!attempt.starts_with("Could not")) return fmt::format("{}:{}.", attempt, placeOf(error));
  return fmt::format("{}{}: {}.", attempt, placeOf(error), causeOf(error.code()));
}

std::string descriptionOf(const std::exception& error) {
  if (const auto* failure = dynamic_cast<const fs::filesystem_error*>(&error)) return sentenceOf(*failure);
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "This computer has not enough free memory.";
  return error.what();
}

}  // namespace

ErrorReport ErrorReport::of(const std::exception& error) {
  if (const auto* known = dynamic_cast<const TidewellError*>(&error)) {
    return {.caseName = std::string(known->caseName()),
            .errorDescription = known->errorDescription(),
            .recoverySuggestion = known->recoverySuggestion()};
  }
  return {.caseName = passedOn, .errorDescription = descriptionOf(error)};
}
