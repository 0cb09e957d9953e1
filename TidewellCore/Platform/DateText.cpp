#include "TidewellCore/Platform/DateText.h"

#include <fmt/format.h>
#include <unicode/gregocal.h>
#include <unicode/localebuilder.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

// Dates beyond the years ±9999 are shown as the last second within; nothing real lies there.
constexpr double earliestShown = -377705116800;
constexpr double latestShown = 253402300799;

std::string identifierOf(const icu::TimeZone& zone) {
  icu::UnicodeString id;
  std::string result;
  zone.getID(id).toUTF8String(result);
  return result;
}

bool isListed(const char* const* codes, std::string_view code) {
  for (; *codes != nullptr; ++codes) {
    if (code == *codes) return true;
  }
  return false;
}

bool isKnownLanguage(std::string_view language) {
  std::int32_t count = 0;
  const icu::Locale* available = icu::Locale::getAvailableLocales(count);
  return std::any_of(available, available + count,
                     [&](const icu::Locale& locale) { return language == locale.getLanguage(); });
}

bool isKnownRegion(std::string_view region) {
  const bool isArea = region.size() == 3 && std::ranges::all_of(region, [](char c) { return c >= '0' && c <= '9'; });
  return region.empty() || isArea || isListed(icu::Locale::getISOCountries(), region);
}

// "C" and "POSIX" as ICU spells them when it is not the system that names them.
bool isSystemName(const icu::Locale& locale) {
  const std::string_view name = locale.getName();
  return name.empty() || name == "c" || name == "posix";
}

// Names and dates are for people, so the system's order of bytes gives way to a language.
icu::Locale ofPeople(const icu::Locale& locale) {
  if (isSystemName(locale)) return icu::Locale::getUS();
  if (std::string_view(locale.getVariant()) != "POSIX") return locale;
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale plain = icu::LocaleBuilder().setLocale(locale).setVariant({}).build(status);
  return U_FAILURE(status) ? icu::Locale::getUS() : plain;
}

std::optional<int> number(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size() || digits.front() == '-') return std::nullopt;
  return value;
}

}  // namespace

Date dateFromUnixTime(double seconds) { return Date(std::chrono::duration<double>(seconds)); }

Date dateFromAppleTime(double seconds) { return dateFromUnixTime(seconds + appleReferenceDateUnixOffset); }

double unixTime(Date date) { return date.time_since_epoch().count(); }

double wholeSecondsShown(Date date) { return std::floor(std::clamp(unixTime(date), earliestShown, latestShown)); }

TimeZone TimeZone::current() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  return named(identifierOf(*zone)).value_or(TimeZone{});
}

std::optional<TimeZone> TimeZone::named(std::string_view identifier) {
  const auto id =
      icu::UnicodeString::fromUTF8(icu::StringPiece(identifier.data(), static_cast<std::int32_t>(identifier.size())));
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(id));
  // ICU answers an unknown identifier with a zone of its own instead of an error.
  if (identifier.empty() || identifierOf(*zone) == UCAL_UNKNOWN_ZONE_ID) return std::nullopt;
  return TimeZone{.identifier = std::string(identifier)};
}

Locale Locale::current() { return {.identifier = ofPeople(icu::Locale::getDefault()).getBaseName()}; }

std::optional<Locale> Locale::named(std::string_view identifier) {
  if (identifier.empty() || identifier.ends_with('_') || identifier.ends_with('-')) return std::nullopt;
  const icu::Locale spelled = icu::Locale::createCanonical(std::string(identifier).c_str());
  if (std::string_view(spelled.getName()).empty()) return std::nullopt;  // ICU drops what is no language at all
  const icu::Locale locale = ofPeople(spelled);
  if (locale.isBogus() || !isKnownLanguage(locale.getLanguage()) || !isKnownRegion(locale.getCountry())) {
    return std::nullopt;
  }
  return Locale{.identifier = locale.getName()};
}

std::string Locale::languageCode() const { return icu::Locale::createCanonical(identifier.c_str()).getLanguage(); }

std::string Locale::region() const { return icu::Locale::createCanonical(identifier.c_str()).getCountry(); }

std::string dateRulesVersion() {
  UVersionInfo version;
  u_getVersion(version);
  std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
  u_versionToString(version, text.data());
  UErrorCode status = U_ZERO_ERROR;
  const char* zones = icu::TimeZone::getTZDataVersion(status);
  return fmt::format("{} {}", text.data(), U_SUCCESS(status) ? zones : "");
}

std::string iso8601(Date date) {
  const std::chrono::sys_seconds instant{std::chrono::seconds(static_cast<std::int64_t>(wholeSecondsShown(date)))};
  const auto midnight = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day day{midnight};
  const std::chrono::hh_mm_ss time{instant - midnight};
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), time.hours().count(),
                     time.minutes().count(), time.seconds().count());
}

std::optional<Date> dateFromISO8601(std::string_view text) {
  // Every fixed place of "2024-05-01T12:00:00Z": where a number begins, how long it is, what follows it.
  struct Field {
    std::size_t offset, length;
    char following;
  };
  constexpr std::array<Field, 6> fields{
      {{0, 4, '-'}, {5, 2, '-'}, {8, 2, 'T'}, {11, 2, ':'}, {14, 2, ':'}, {17, 2, 'Z'}}};
  if (text.size() != 20) return std::nullopt;
  std::array<int, fields.size()> values{};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::optional<int> value = number(text.substr(fields[i].offset, fields[i].length));
    if (!value || text[fields[i].offset + fields[i].length] != fields[i].following) return std::nullopt;
    values[i] = *value;
  }
  const std::chrono::year_month_day day{std::chrono::year(values[0]),
                                        std::chrono::month(static_cast<unsigned>(values[1])),
                                        std::chrono::day(static_cast<unsigned>(values[2]))};
  if (!day.ok() || values[3] > 23 || values[4] > 59 || values[5] > 60) return std::nullopt;
  return Date(std::chrono::sys_days(day) + std::chrono::hours(values[3]) + std::chrono::minutes(values[4]) +
              std::chrono::seconds(values[5]));
}

std::optional<Day> dayFromISO8601(std::string_view text) {
  const std::optional<Date> midnight = dateFromISO8601(std::string(text) + "T00:00:00Z");
  if (!midnight) return std::nullopt;
  return Day(std::chrono::floor<std::chrono::days>(*midnight));
}

std::string iso8601(Day day) {
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                     static_cast<unsigned>(day.day()));
}

Date startOf(Day day, const TimeZone& timeZone) {
  UErrorCode status = U_ZERO_ERROR;
  icu::GregorianCalendar calendar(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZone.identifier)),
                                  status);
  calendar.setGregorianChange(-std::numeric_limits<double>::max(), status);
  calendar.clear();
  // Clocks may be put forward at midnight, or back to it.
  calendar.setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
  calendar.setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
  calendar.set(UCAL_EXTENDED_YEAR, static_cast<int>(day.year()));
  calendar.set(UCAL_MONTH, static_cast<int>(static_cast<unsigned>(day.month())) - 1);
  calendar.set(UCAL_DAY_OF_MONTH, static_cast<int>(static_cast<unsigned>(day.day())));
  const double milliseconds = calendar.getTime(status);
  if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
  return dateFromUnixTime(milliseconds / U_MILLIS_PER_SECOND);
}
