#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/Platform/DateText.h"

// How the dates in media names are written.
struct MediaNaming {
  TimeZone timeZone;
  Locale locale;

  bool operator==(const MediaNaming&) const = default;
};

// The file in which an export remembers how it named its media, so that a later
// one finds them again from another time zone or in another language.
namespace NamingMemory {

inline constexpr const char* fileName = ".tidewell-names.json";

// Absent unless the file is whole, of a known version, and names a zone and a locale that exist.
std::optional<MediaNaming> load(const std::filesystem::path& contentRoot);

// A file that says the same already keeps its date. Throws what writing reports.
void save(const std::filesystem::path& contentRoot, const MediaNaming& naming);

// What an export asks for: the system's zone and locale, or what somebody chose.
struct Wish {
  MediaNaming naming;
  bool isTimeZoneChosen = false;
  bool isLocaleChosen = false;
};

struct Decision {
  MediaNaming naming;
  std::vector<std::string> warnings;  // sentences for people

  bool operator==(const Decision&) const = default;
};

// What was chosen counts, with a warning when it differs from what is
// remembered; then what is remembered; then what the system says.
Decision decide(const Wish& wish, const std::optional<MediaNaming>& remembered);

}  // namespace NamingMemory
