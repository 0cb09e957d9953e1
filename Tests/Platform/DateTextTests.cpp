#include "TidewellCore/Platform/DateText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace {

constexpr double distantPast = -63114076800;  // what Apple's frameworks call so, in seconds since 2001
constexpr double distantFuture = 63113904000;

std::string formatted(const char* pattern, double unixSeconds, const char* zone, const char* locale = "en_US") {
  return DateFormatter(pattern, {.identifier = zone}, {.identifier = locale}).string(dateFromUnixTime(unixSeconds));
}

TEST(DateText, CountsAppleTimeFrom2001) {
  EXPECT_EQ(iso8601(dateFromAppleTime(0)), "2001-01-01T00:00:00Z");
  EXPECT_EQ(unixTime(dateFromAppleTime(0.5)), 978307200.5);
  EXPECT_EQ(dateFromUnixTime(978307200), dateFromAppleTime(0));
}

TEST(DateText, WritesISO8601InUTC) {
  EXPECT_EQ(iso8601(dateFromUnixTime(1714564800)), "2024-05-01T12:00:00Z");
  EXPECT_EQ(iso8601(dateFromUnixTime(1714564800.999)), "2024-05-01T12:00:00Z");
  EXPECT_EQ(iso8601(dateFromUnixTime(-0.5)), "1969-12-31T23:59:59Z") << "rounded down, not towards zero";
  EXPECT_EQ(iso8601(dateFromUnixTime(951782400)), "2000-02-29T00:00:00Z");
}

TEST(DateText, TheDistantPastAndFutureKeepTheirSecond) {
  // ISO 8601 counts by the Gregorian rules before 1582 too. By the Julian rules the distant past is
  // the first day of the year 1, by these the day two days earlier.
  EXPECT_EQ(iso8601(dateFromAppleTime(distantPast)), "0000-12-30T00:00:00Z");
  EXPECT_EQ(iso8601(dateFromAppleTime(distantFuture)), "4001-01-01T00:00:00Z");
  EXPECT_EQ(dateFromISO8601("0000-12-30T00:00:00Z"), dateFromAppleTime(distantPast));
  EXPECT_EQ(dateFromISO8601("4001-01-01T00:00:00Z"), dateFromAppleTime(distantFuture));
}

TEST(DateText, DatesWithoutEndAreWrittenAsTheLastOnes) {
  EXPECT_EQ(iso8601(dateFromUnixTime(1e300)), "9999-12-31T23:59:59Z");
  EXPECT_EQ(iso8601(dateFromUnixTime(-1e300)), "-9999-01-01T00:00:00Z");
}

TEST(DateText, ReadsISO8601) {
  EXPECT_EQ(dateFromISO8601("2024-05-01T12:00:00Z"), dateFromUnixTime(1714564800));
  EXPECT_EQ(dateFromISO8601("1970-01-01T00:00:00Z"), dateFromUnixTime(0));
  EXPECT_EQ(dateFromISO8601("2016-12-31T23:59:60Z"), dateFromISO8601("2017-01-01T00:00:00Z")) << "a leap second";
}

TEST(DateText, ReadsNothingElseAsADate) {
  for (const char* text :
       {"", "2024-05-01", "2024-05-01T12:00:00", "2024-05-01 12:00:00Z", "2024-05-01T12:00:00+01:00",
        "2024-13-01T12:00:00Z", "2024-02-30T12:00:00Z", "2023-02-29T12:00:00Z", "2024-05-01T24:00:00Z",
        "2024-05-01T12:60:00Z", "2024-05-01T12:00:61Z", "2024-5-001T12:00:00Z", "2024-05-01T12:00:-1Z",
        "+024-05-01T12:00:00Z", "-024-05-01T12:00:00Z", "2024-05-01t12:00:00z", " 2024-05-01T12:00:00Z"}) {
    EXPECT_EQ(dateFromISO8601(text), std::nullopt) << text;
  }
}

TEST(DateText, FormatsInTheGivenZone) {
  EXPECT_EQ(formatted("yyyy-MM-dd HH:mm:ss", 1714564800, "UTC"), "2024-05-01 12:00:00");
  EXPECT_EQ(formatted("yyyy-MM-dd HH:mm:ss", 1714564800, "America/Sao_Paulo"), "2024-05-01 09:00:00");
  EXPECT_EQ(formatted("yyyy-MM-dd HH:mm:ss", 1714564800, "Asia/Kathmandu"), "2024-05-01 17:45:00");
}

TEST(DateText, HeedsDaylightSaving) {
  EXPECT_EQ(formatted("HH:mm", 1711846799, "Europe/Lisbon"), "00:59");
  EXPECT_EQ(formatted("HH:mm", 1711846800, "Europe/Lisbon"), "02:00");
}

TEST(DateText, FormatsTheDistantPastAsTheFirstDayOfTheYearOne) {
  EXPECT_EQ(formatted("yyyy-MM-dd_HHmmss", distantPast + 978307200, "UTC"), "0001-01-01_000000");
  EXPECT_EQ(formatted("yyyy-MM-dd_HHmmss", distantFuture + 978307200, "UTC"), "4001-01-01_000000");
  EXPECT_EQ(formatted("yyyy-MM-dd", -12219292800, "UTC"), "1582-10-15");
  EXPECT_EQ(formatted("yyyy-MM-dd", -12219292801, "UTC"), "1582-10-04") << "the last Julian day";
}

TEST(DateText, FormatsInTheLanguageOfTheLocale) {
  EXPECT_EQ(formatted("MMMM", 1714564800, "UTC", "pt_BR"), "maio");
  EXPECT_EQ(formatted("MMMM", 1714564800, "UTC", "en_US"), "May");
  EXPECT_EQ(formatted("yyyy", 1714564800, "UTC", "ar_EG"), "٢٠٢٤");
}

TEST(DateText, SpellsOutTheDayAsTheLocaleDoes) {
  const Date noon = dateFromUnixTime(1714564800);
  EXPECT_EQ(DateFormatter::fullDate({"UTC"}, {"en_US"}).string(noon), "Wednesday, May 1, 2024");
  EXPECT_EQ(DateFormatter::fullDate({"UTC"}, {"pt_BR"}).string(noon), "quarta-feira, 1 de maio de 2024");
  EXPECT_EQ(DateFormatter::fullDate({"Pacific/Kiritimati"}, {"en_US"}).string(noon), "Thursday, May 2, 2024");
}

TEST(DateText, TellsTheTimeToTheSecondAsTheLocaleDoes) {
  const Date time = dateFromUnixTime(1714572309.9);
  EXPECT_EQ(DateFormatter::mediumTime({"UTC"}, {"en_US"}).string(time), "2:05:09\u202FPM");
  EXPECT_EQ(DateFormatter::mediumTime({"UTC"}, {"pt_BR"}).string(time), "14:05:09");
  EXPECT_EQ(DateFormatter::mediumTime({"America/Sao_Paulo"}, {"pt_BR"}).string(time), "11:05:09");
}

TEST(DateText, ShortensDateAndTimeAsTheLocaleDoes) {
  const Date date = dateFromUnixTime(1678026120);
  const auto shortened = [&](const char* zone, const char* locale) {
    return DateFormatter::abbreviatedDateAndShortTime({zone}, {locale}).string(date);
  };
  EXPECT_EQ(shortened("UTC", "en_US"), "Mar 5, 2023, 2:22\u202FPM");
  EXPECT_EQ(shortened("America/Sao_Paulo", "pt_BR"), "5 de mar. de 2023, 11:22");
  EXPECT_EQ(shortened("Asia/Kathmandu", "de_DE"), "05.03.2023, 20:07");
  EXPECT_EQ(shortened("Asia/Tokyo", "ja_JP"), "2023/03/05 23:22");
}

// A zone in a pattern keeps what is remembered of days and times out of it.
TEST(DateText, RememberedDaysAndTimesReadAsThoseOfEachDateAlone) {
  std::mt19937_64 random(1);
  for (const char* pattern : {"yyyy-MM-dd_HHmmss", "dd/MM/yyyy HH:mm:ss", "h:mm:ss a 'on' EEEE, d MMMM y G",
                              "HH 'h' mm", "EEE d", "yyyy HH MM", "k:mm B, D", "''yyyy'y' 'at ''' HH"}) {
    for (const char* zone : {"UTC", "America/Sao_Paulo", "Europe/Lisbon", "Asia/Kathmandu", "Africa/Monrovia",
                             "Australia/Lord_Howe", "Pacific/Apia", "Asia/Gaza"}) {
      for (const char* locale : {"en_US", "pt_BR", "ar_EG", "th_TH", "he_IL", "ja_JP", "zh_TW", "hi_IN"}) {
        const DateFormatter fast(pattern, {zone}, {locale});
        const DateFormatter plain(std::string(pattern) + "'|'X", {zone}, {locale});
        for (int i = 0; i < 200; ++i) {
          const bool isAnywhere = i % 4 == 0;  // in the history of zones and calendars
          const double seconds = static_cast<double>(random() % 3'000'000'000) * (isAnywhere ? 30 : 1) -
                                 (isAnywhere ? 70'000'000'000. : 1'000'000'000.);
          const std::string expected = plain.string(dateFromUnixTime(seconds));
          ASSERT_EQ(fast.string(dateFromUnixTime(seconds)), expected.substr(0, expected.rfind('|')))
              << pattern << " " << zone << " " << locale << " " << seconds;
        }
      }
    }
  }
}

TEST(DateText, FractionsOfASecondAreCutOff) {
  EXPECT_EQ(formatted("ss", 59.9999, "UTC"), "59");
  EXPECT_EQ(formatted("ss", -0.0001, "UTC"), "59");
}

TEST(DateText, FormatsDatesWithoutEnd) {
  EXPECT_EQ(formatted("yyyy-MM-dd", 1e300, "UTC"), "9999-12-31");
  EXPECT_NO_THROW(formatted("yyyy-MM-dd", -1e300, "UTC"));
}

TEST(DateText, AFormatterCanBeMoved) {
  DateFormatter first("ss", {}, {});
  DateFormatter second = std::move(first);
  EXPECT_EQ(second.string(dateFromUnixTime(7)), "07");
}

TEST(DateText, ReadsDaysAndNothingElse) {
  EXPECT_EQ(dayFromISO8601("2024-02-29"), Day(std::chrono::year(2024) / 2 / 29));
  EXPECT_EQ(iso8601(Day(std::chrono::year(987) / 6 / 5)), "0987-06-05");
  for (const char* text : {"", "2023-02-29", "2024-2-9", "24-02-09", "2024-02-09T00:00:00Z", "2024/02/09", "2024-13-01",
                           "2024-00-01", " 2024-02-09", "2024-02-09 "}) {
    EXPECT_EQ(dayFromISO8601(text), std::nullopt) << text;
  }
}

TEST(DateText, ADayBeginsAtItsFirstMoment) {
  const auto begins = [](const char* day, const char* zone) {
    return iso8601(startOf(*dayFromISO8601(day), TimeZone{zone}));
  };
  EXPECT_EQ(begins("2024-05-01", "UTC"), "2024-05-01T00:00:00Z");
  EXPECT_EQ(begins("2024-05-01", "America/Sao_Paulo"), "2024-05-01T03:00:00Z");
  EXPECT_EQ(begins("2018-11-04", "America/Sao_Paulo"), "2018-11-04T03:00:00Z") << "clocks went from midnight to one";
  EXPECT_EQ(begins("2018-02-18", "America/Sao_Paulo"), "2018-02-18T03:00:00Z") << "the hour before came twice";
  EXPECT_EQ(begins("2023-11-05", "America/Havana"), "2023-11-05T04:00:00Z") << "the first hour came twice";
  EXPECT_EQ(begins("2011-12-30", "Pacific/Apia"), begins("2011-12-31", "Pacific/Apia")) << "a day that never was";
  EXPECT_EQ(begins("0001-01-01", "UTC"), "0001-01-01T00:00:00Z");
  EXPECT_EQ(begins("1500-03-01", "UTC"), "1500-03-01T00:00:00Z");
}

TEST(TimeZone, KnowsTheZonesOfTheDatabase) {
  for (const char* identifier : {"UTC", "America/Sao_Paulo", "Asia/Kathmandu", "Europe/Lisbon", "GMT"}) {
    EXPECT_EQ(TimeZone::named(identifier), TimeZone{.identifier = identifier});
  }
}

TEST(TimeZone, RefusesUnknownZones) {
  for (const char* identifier : {"", "Mars/Olympus", "america sao paulo", "Etc/Unknown", "\xFF"}) {
    EXPECT_EQ(TimeZone::named(identifier), std::nullopt) << identifier;
  }
}

TEST(TimeZone, CurrentIsOneThatExists) { EXPECT_TRUE(TimeZone::named(TimeZone::current().identifier)); }

TEST(Locale, TakesBothSeparators) {
  EXPECT_EQ(Locale::named("pt_BR"), Locale{.identifier = "pt_BR"});
  EXPECT_EQ(Locale::named("pt-BR"), Locale{.identifier = "pt_BR"});
  EXPECT_EQ(Locale::named("PT_br"), Locale{.identifier = "pt_BR"});
  EXPECT_EQ(Locale::named("de"), Locale{.identifier = "de"});
}

TEST(Locale, RefusesUnknownLanguagesAndRegions) {
  for (const char* identifier :
       {"", "xx_YY", "pt_QQ", "klingon", "_BR", "english", "xxxxxxxxxxxxxxxxxxxx", "../..", "en_", "-"}) {
    EXPECT_EQ(Locale::named(identifier), std::nullopt) << identifier;
  }
}

TEST(Locale, TellsItsLanguageInLowerCase) {
  EXPECT_EQ(Locale{.identifier = "pt_BR"}.languageCode(), "pt");
  EXPECT_EQ(Locale{.identifier = "PT-br"}.languageCode(), "pt");
  EXPECT_EQ(Locale{.identifier = "zh_Hant_TW"}.languageCode(), "zh");
}

TEST(Locale, TheSystemsOrderOfBytesIsNoLanguage) {
  for (const char* identifier :
       {"C", "C.UTF-8", "C.utf8", "POSIX", "en_US_POSIX", "en-US-posix", "en_US_POSIX.UTF-8", "en-US-u-va-posix"}) {
    EXPECT_EQ(Locale::named(identifier), Locale{.identifier = "en_US"}) << identifier;
  }
  EXPECT_EQ(Locale::named("de_DE_POSIX"), Locale{.identifier = "de_DE"});
  EXPECT_EQ(Locale::named("zh_Hant_TW_POSIX"), Locale{.identifier = "zh_Hant_TW"});
  for (const char* identifier : {"C_QQ", "CC", "posix_BR"}) EXPECT_EQ(Locale::named(identifier), std::nullopt);
}

// Exports made under LANG=C by earlier versions keep their names and texts.
TEST(Locale, WithoutALanguageDatesReadAsTheyDidUnderTheOrderOfBytes) {
  const TimeZone zone{"America/Sao_Paulo"};
  const Locale posix{"en_US_POSIX"};
  const Locale now = Locale::named("C").value();
  for (const double time : {-62135596800.0, -377705116800.0, 0.0, 978307200.0, 1678307200.0, 253402300799.0}) {
    const Date date = dateFromUnixTime(time);
    for (const char* pattern : {"yyyy-MM-dd_HHmmss", "yyyy-MM-dd HH:mm:ss"}) {
      EXPECT_EQ(DateFormatter(pattern, zone, now).string(date), DateFormatter(pattern, zone, posix).string(date));
    }
    for (const auto make :
         {DateFormatter::fullDate, DateFormatter::mediumTime, DateFormatter::abbreviatedDateAndShortTime}) {
      EXPECT_EQ(make(zone, now).string(date), make(zone, posix).string(date));
    }
  }
}

TEST(Locale, CurrentHasALanguage) { EXPECT_NE(Locale::current().languageCode(), ""); }

}  // namespace
