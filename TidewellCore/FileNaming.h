#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/DateText.h"

// Every name that an export gives to a file or folder, and how names compare.
namespace FileNaming {

// File systems take names of at most this many bytes.
inline constexpr std::size_t maximumNameBytes = 255;

// Two names with the same key would collide on a file system that ignores
// letter case or composes accents: canonical composition, then lower case,
// as full as any of them has it: "Straße" is "STRASSE".
std::string normalizedKey(std::string_view name);
bool namesMatch(std::string_view a, std::string_view b);

// A safe file name from the last component of `original`; "file" when nothing is left.
std::string sanitizeFileName(std::string_view original);
// A safe folder name; "Untitled" when nothing is left that can be seen.
std::string sanitizeFolderName(std::string_view name);

// Writes stamps as "yyyy-MM-dd_HHmmss". One thread at a time.
DateFormatter stampFormatter(const TimeZone& timeZone, const Locale& locale);
// "undated" without a date.
std::string stamp(const std::optional<Date>& date, const DateFormatter& formatter);
std::string stamp(const std::optional<Date>& date, const TimeZone& timeZone, const Locale& locale);
// The stamp, "_" and the cleaned original name.
std::string exportFileName(const std::optional<Date>& date, std::string_view original, const DateFormatter& formatter);
std::string exportFileName(const std::optional<Date>& date, std::string_view original, const TimeZone& timeZone,
                           const Locale& locale);
// Whether a file name begins as `exportFileName` begins it, in the digits of any script.
bool hasExportStamp(std::string_view fileName);

// `seconds` since 2001-01-01T00:00:00Z.
Date dateFromAppleTimestamp(double seconds);

// The name itself for an index up to 1; else the name with "-" and the index before its extension.
std::string variant(std::string_view name, int index);
// The variants 1 to `limit`; a limit below 1 is a fault of the program.
std::vector<std::string> collisionVariants(std::string_view name, int limit);
// The first listed name with the key of `name`.
std::optional<std::string> existingName(const std::vector<std::string>& names, std::string_view name);

// The chat's folder in a media path "Message/Media/<jid>/…"; absent for other paths.
std::optional<std::string> chatJID(std::string_view mediaRelativePath);

// Whether a name read from a file may be joined to a path: one visible component within the byte limit.
bool isSafeComponent(std::string_view name);

}  // namespace FileNaming
