#include "TidewellCore/Destination/NamingMemory.h"

#include <fmt/format.h>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/JsonFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = 64 << 10;
constexpr std::int64_t version = 1;

constexpr const char* timeZoneKey = "timeZone";
constexpr const char* localeKey = "locale";
constexpr const char* versionKey = "version";

std::optional<MediaNaming> namingOf(const Json::Object& object) {
  const auto* written = JSONMembers::member<std::int64_t>(object, versionKey);
  const auto* zone = JSONMembers::member<std::string>(object, timeZoneKey);
  const auto* language = JSONMembers::member<std::string>(object, localeKey);
  if (written == nullptr || *written != version || zone == nullptr || language == nullptr) return std::nullopt;
  const auto timeZone = TimeZone::named(*zone);
  const auto locale = Locale::named(*language);
  if (!timeZone || !locale) return std::nullopt;
  return MediaNaming{.timeZone = *timeZone, .locale = *locale};
}

std::string warning(std::string_view what, std::string_view now, std::string_view before) {
  return fmt::format(
      "Dates in file names are now written for the {0} “{1}”. Earlier exports into this folder used “{2}”; files that "
      "are there already keep their names.",
      what, now, before);
}

}  // namespace

std::optional<MediaNaming> NamingMemory::load(const fs::path& contentRoot) {
  const std::optional<Json::Object> object = JsonFile::readIfThere(contentRoot / fileName, largestFile);
  return object ? namingOf(*object) : std::nullopt;
}

void NamingMemory::save(const fs::path& contentRoot, const MediaNaming& naming) {
  Files::writeWhenDifferent(contentRoot / fileName, JsonFile::content({{timeZoneKey, naming.timeZone.identifier},
                                                                       {localeKey, naming.locale.identifier},
                                                                       {versionKey, version}}));
}

NamingMemory::Decision NamingMemory::decide(const Wish& wish, const std::optional<MediaNaming>& remembered) {
  Decision decision{.naming = wish.naming};
  auto& [timeZone, locale] = decision.naming;
  // A language that has no dates of its own writes the same digits, and can be read back.
  if (!Locale::named(locale.identifier)) locale = Locale();
  if (!remembered) return decision;
  if (!wish.isTimeZoneChosen) timeZone = remembered->timeZone;
  if (!wish.isLocaleChosen) locale = remembered->locale;
  if (timeZone != remembered->timeZone) {
    decision.warnings.push_back(warning("time zone", timeZone.identifier, remembered->timeZone.identifier));
  }
  if (locale != remembered->locale) {
    decision.warnings.push_back(warning("locale", locale.identifier, remembered->locale.identifier));
  }
  return decision;
}
