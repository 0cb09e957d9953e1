#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// A point in time: seconds since 1970-01-01T00:00:00Z, with fractions.
using Date = std::chrono::sys_time<std::chrono::duration<double>>;

// iPhones count seconds from 2001-01-01T00:00:00Z; this is that day in Unix time.
inline constexpr double appleReferenceDateUnixOffset = 978307200;

Date dateFromUnixTime(double seconds);
Date dateFromAppleTime(double seconds);
double unixTime(Date date);
// The second as which a date is shown, in Unix time: the one that it is in, and for dates beyond the years ±9999 the
// last one within.
double wholeSecondsShown(Date date);

// A day of the Gregorian calendar, in no time zone.
using Day = std::chrono::year_month_day;

// A time zone of the IANA database, by its identifier ("America/Sao_Paulo").
struct TimeZone {
  std::string identifier = "UTC";

  // The system's zone, UTC when it cannot be told.
  static TimeZone current();
  // Absent when there is no such zone.
  static std::optional<TimeZone> named(std::string_view identifier);

  bool operator==(const TimeZone&) const = default;
};

// A language and region, by its identifier ("pt_BR").
struct Locale {
  std::string identifier = "en_US";

  // The system's. Never the "C" or "POSIX" of systems without a language, in
  // which names stand in the order of their bytes: "en_US" then.
  static Locale current();
  // Takes "pt_BR" and "pt-BR" alike, and "C" as above. Absent when language or region do not exist.
  static std::optional<Locale> named(std::string_view identifier);
  // The language alone, in lower case ("pt").
  std::string languageCode() const;
  // The region alone, in upper case ("BR"), or a number ("419"); "" where there is none.
  std::string region() const;

  bool operator==(const Locale&) const = default;
};

// Writes dates after a pattern of Unicode TR 35 ("yyyy-MM-dd_HHmmss") or in a
// style of the locale, those before October 1582 in the Julian calendar, by which Apple's distant past is the
// first day of the year 1. Costly to make and cheap to use; one thread at a time.
class DateFormatter {
 public:
  DateFormatter(std::string_view pattern, const TimeZone& timeZone, const Locale& locale);
  // The day as a locale spells it out: "Wednesday, May 1, 2024".
  static DateFormatter fullDate(const TimeZone& timeZone, const Locale& locale);
  // The time of day to the second: "2:05:09 PM", with the locale's own spaces.
  static DateFormatter mediumTime(const TimeZone& timeZone, const Locale& locale);
  // The day in short words and the time to the minute: "Mar 5, 2023, 2:22 PM", with the locale's own spaces.
  static DateFormatter abbreviatedDateAndShortTime(const TimeZone& timeZone, const Locale& locale);
  ~DateFormatter();
  DateFormatter(DateFormatter&&) noexcept;
  DateFormatter& operator=(DateFormatter&&) noexcept;

  std::string string(Date date) const;

 private:
  struct Format;
  explicit DateFormatter(std::unique_ptr<Format> format);
  std::unique_ptr<Format> format_;
};

// Of the rules after which dates are written and zones have their hours: another text for other rules.
std::string dateRulesVersion();

// "2024-05-01T12:00:00Z" (ISO 8601, whole seconds, UTC, Gregorian for all time).
std::string iso8601(Date date);
// Reads that form alone; absent for any other text.
std::optional<Date> dateFromISO8601(std::string_view text);

// "2024-05-01" alone; absent for any other text, and for a day that no month has.
std::optional<Day> dayFromISO8601(std::string_view text);
std::string iso8601(Day day);
// When a day begins in a time zone: at midnight, or later where clocks are put forward over it.
Date startOf(Day day, const TimeZone& timeZone);
