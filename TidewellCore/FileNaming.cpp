#include "TidewellCore/FileNaming.h"

#include <fmt/format.h>

#include <algorithm>

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::size_t fileNameCharacters = 200;
constexpr std::size_t folderNameCharacters = 180;
constexpr std::string_view stampPattern = "yyyy-MM-dd_HHmmss";
constexpr std::string_view undated = "undated";

bool needsReplacing(char32_t scalar) {
  return scalar == U'/' || scalar == U':' || scalar == U'\\' || Text::isControl(scalar) ||
         Text::isDirectionalMark(scalar);
}

std::string cleaned(std::string_view text) {
  std::u32string scalars = Text::scalars(text);
  std::ranges::replace_if(scalars, needsReplacing, U'-');
  return Text::fromScalars(scalars);
}

std::string_view trimmedOfDotsAndDashes(std::string_view text) {
  const auto first = text.find_first_not_of(".-");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(".-") - first + 1);
}

bool hasAnythingToSee(std::string_view name) {
  const std::u32string scalars = Text::scalars(name);
  return !std::ranges::all_of(scalars,
                              [](char32_t scalar) { return Text::isInvisible(scalar) || Text::isBlank(scalar); });
}

// Shortens the part before the extension until the whole name fits a file system.
std::string fitted(std::string_view stem, std::string_view ending) {
  if (ending.size() >= FileNaming::maximumNameBytes) {
    return Text::cutToBytes(std::string(stem).append(ending), FileNaming::maximumNameBytes);
  }
  return Text::cutToBytes(stem, FileNaming::maximumNameBytes - ending.size()).append(ending);
}

// The extension with its dot, or nothing.
std::string_view dottedExtension(std::string_view name) { return name.substr(PathText::withoutExtension(name).size()); }

std::string fittedFileName(std::string_view name) {
  return fitted(PathText::withoutExtension(name), dottedExtension(name));
}

}  // namespace

std::string FileNaming::normalizedKey(std::string_view name) { return Text::caseFolded(Text::composed(name)); }

bool FileNaming::namesMatch(std::string_view a, std::string_view b) { return normalizedKey(a) == normalizedKey(b); }

std::string FileNaming::sanitizeFileName(std::string_view original) {
  constexpr std::string_view fallback = "file";
  const std::string name = Text::trimmed(cleaned(PathText::lastComponent(original)));
  if (name.empty()) return std::string(fallback);
  return fittedFileName(Text::firstCharacters(name, fileNameCharacters));
}

std::string FileNaming::sanitizeFolderName(std::string_view name) {
  constexpr std::string_view fallback = "Untitled";
  const std::string text = Text::trimmed(cleaned(name));
  const std::string_view trimmed = trimmedOfDotsAndDashes(text);
  if (!hasAnythingToSee(trimmed)) return std::string(fallback);
  return Text::cutToBytes(Text::firstCharacters(trimmed, folderNameCharacters), maximumNameBytes);
}

DateFormatter FileNaming::stampFormatter(const TimeZone& timeZone, const Locale& locale) {
  return {stampPattern, timeZone, locale};
}

std::string FileNaming::stamp(const std::optional<Date>& date, const DateFormatter& formatter) {
  return date ? formatter.string(*date) : std::string(undated);
}

std::string FileNaming::stamp(const std::optional<Date>& date, const TimeZone& timeZone, const Locale& locale) {
  return stamp(date, stampFormatter(timeZone, locale));
}

std::string FileNaming::exportFileName(const std::optional<Date>& date, std::string_view original,
                                       const DateFormatter& formatter) {
  return fittedFileName(fmt::format("{}_{}", stamp(date, formatter), sanitizeFileName(original)));
}

std::string FileNaming::exportFileName(const std::optional<Date>& date, std::string_view original,
                                       const TimeZone& timeZone, const Locale& locale) {
  return exportFileName(date, original, stampFormatter(timeZone, locale));
}

bool FileNaming::hasExportStamp(std::string_view fileName) {
  if (fileName.starts_with(std::string(undated) + "_")) return true;
  // The pattern's letters stand for digits, everything else for itself.
  const std::u32string pattern = Text::scalars(std::string(stampPattern) + "_");
  const std::u32string name = Text::scalars(fileName);
  if (name.size() < pattern.size()) return false;
  return std::equal(pattern.begin(), pattern.end(), name.begin(), [](char32_t expected, char32_t actual) {
    return Text::isAlphanumeric(expected) ? Text::digitValue(actual) >= 0 : expected == actual;
  });
}

Date FileNaming::dateFromAppleTimestamp(double seconds) { return dateFromAppleTime(seconds); }

std::string FileNaming::variant(std::string_view name, int index) {
  if (index <= 1) return std::string(name);
  return fitted(PathText::withoutExtension(name), fmt::format("-{}{}", index, dottedExtension(name)));
}

std::vector<std::string> FileNaming::collisionVariants(std::string_view name, int limit) {
  precondition(limit >= 1, "collisionVariants needs a limit of at least 1");
  std::vector<std::string> variants;
  for (int index = 1; index <= limit; ++index) variants.push_back(variant(name, index));
  return variants;
}

std::optional<std::string> FileNaming::existingName(const std::vector<std::string>& names, std::string_view name) {
  const auto found = std::ranges::find_if(names, [&](const std::string& listed) { return namesMatch(listed, name); });
  return found == names.end() ? std::nullopt : std::optional(*found);
}

std::optional<std::string> FileNaming::chatJID(std::string_view mediaRelativePath) {
  std::vector<std::string_view> pieces;
  while (!mediaRelativePath.empty() && pieces.size() < 3) {
    const auto slash = std::min(mediaRelativePath.find('/'), mediaRelativePath.size());
    if (slash > 0) pieces.push_back(mediaRelativePath.substr(0, slash));
    mediaRelativePath.remove_prefix(std::min(slash + 1, mediaRelativePath.size()));
  }
  if (pieces.size() < 3 || pieces[0] != "Message" || pieces[1] != "Media") return std::nullopt;
  return std::string(pieces[2]);
}

bool FileNaming::isSafeComponent(std::string_view name) {
  return !name.empty() && name.size() <= maximumNameBytes && !name.starts_with('.') &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}
