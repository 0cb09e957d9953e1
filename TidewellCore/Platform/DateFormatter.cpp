#include <unicode/basictz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/tztrans.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "TidewellCore/Platform/DateText.h"

namespace {

constexpr std::int64_t secondsOfADay = 86'400;

std::int64_t floorDivided(std::int64_t value, std::int64_t by) { return value / by - (value % by < 0 ? 1 : 0); }

icu::Locale icuLocale(const Locale& locale) { return icu::Locale::createCanonical(locale.identifier.c_str()); }

// What the letters of a pattern stand for (Unicode TR 35, "Date Field Symbol Table").
constexpr std::u16string_view lettersOfDays = u"GyYuUrQqMLlwWdDFgEec";
constexpr std::u16string_view lettersOfTimes = u"abBhHKkms";

bool has(std::u16string_view letters, char16_t character) { return letters.find(character) != letters.npos; }

bool isLetter(char16_t character) {
  return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

// A pattern that tells the day and then the time, or the other way round, in two patterns.
struct Halves {
  icu::UnicodeString first;
  icu::UnicodeString second;
  bool isDayFirst = true;

  // Absent for patterns in which they are mixed, and that tell anything else, such as the zone.
  static std::optional<Halves> of(const icu::UnicodeString& pattern) {
    std::optional<bool> isDayFirst;
    std::int32_t cut = pattern.length();
    bool isQuoted = false;
    for (std::int32_t at = 0; at < pattern.length(); ++at) {
      const char16_t character = pattern[at];
      if (character == u'\'') isQuoted = !isQuoted;
      if (isQuoted || !isLetter(character)) continue;
      const bool isDay = has(lettersOfDays, character);
      if (!isDay && !has(lettersOfTimes, character)) return std::nullopt;
      if (!isDayFirst) isDayFirst = isDay;
      const bool isOfFirst = isDay == *isDayFirst;
      if (isOfFirst && cut < at) return std::nullopt;
      if (!isOfFirst) cut = std::min(cut, at);
    }
    return Halves{.first = pattern.tempSubStringBetween(0, cut),
                  .second = pattern.tempSubString(cut),
                  .isDayFirst = isDayFirst.value_or(true)};
  }
};

// A stretch of time in which a zone's clocks were not moved.
struct Stretch {
  double begin = 0;  // in milliseconds since 1970
  double end = 0;
  std::int64_t offset = 0;  // in seconds, to be added to UTC

  bool has(double milliseconds) const { return milliseconds >= begin && milliseconds < end; }

  // Absent when the zone does not tell.
  static std::optional<Stretch> at(double milliseconds, const icu::BasicTimeZone& zone) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    zone.getOffset(milliseconds, false, raw, saving, status);
    const std::int64_t offset = std::int64_t{raw} + saving;
    if (U_FAILURE(status) || offset % 1000 != 0) return std::nullopt;
    Stretch stretch{.begin = -std::numeric_limits<double>::infinity(),
                    .end = std::numeric_limits<double>::infinity(),
                    .offset = offset / 1000};
    icu::TimeZoneTransition transition;
    if (zone.getPreviousTransition(milliseconds, true, transition)) stretch.begin = transition.getTime();
    if (zone.getNextTransition(milliseconds, false, transition)) stretch.end = transition.getTime();
    return stretch;
  }
};

std::string text(const icu::DateFormat& format, double milliseconds) {
  icu::UnicodeString written;
  std::string result;
  format.format(milliseconds, written).toUTF8String(result);
  return result;
}

// Writes dates from the texts of their days and of their times of the day, each of which is made once: messages tell
// the same ones over and over, and ICU takes as long for a date as the rest of a message takes to be written.
class RememberedTexts {
 public:
  // Absent for a format that tells more than a day and a time, or in a zone that does not tell when clocks are moved.
  static std::unique_ptr<RememberedTexts> of(const icu::DateFormat& format) {
    const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(&format);
    const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(&format.getTimeZone());
    if (simple == nullptr || zone == nullptr) return nullptr;
    icu::UnicodeString pattern;
    const auto halves = Halves::of(simple->toPattern(pattern));
    return halves ? std::make_unique<RememberedTexts>(*simple, *zone, *halves) : nullptr;
  }

  RememberedTexts(const icu::SimpleDateFormat& format, const icu::BasicTimeZone& zone, const Halves& halves)
      : zone_(zone.clone()),
        isDayFirst_(halves.isDayFirst),
        day_(withPattern(format, isDayFirst_ ? halves.first : halves.second)),
        time_(withPattern(format, isDayFirst_ ? halves.second : halves.first)),
        times_(secondsOfADay) {}

  // Absent where the zone does not tell its offset.
  std::optional<std::string> string(double seconds) {
    const double milliseconds = seconds * U_MILLIS_PER_SECOND;
    if (!stretch_ || !stretch_->has(milliseconds)) stretch_ = Stretch::at(milliseconds, *zone_);
    if (!stretch_) return std::nullopt;
    const std::int64_t local = static_cast<std::int64_t>(seconds) + stretch_->offset;
    const std::int64_t number = floorDivided(local, secondsOfADay);
    std::string& time = times_[static_cast<std::size_t>(local - number * secondsOfADay)];
    if (time.empty()) time = text(*time_, milliseconds);
    const std::string& day = dayOf(number, milliseconds);
    return isDayFirst_ ? day + time : time + day;
  }

 private:
  static std::unique_ptr<icu::SimpleDateFormat> withPattern(const icu::SimpleDateFormat& format,
                                                            const icu::UnicodeString& pattern) {
    std::unique_ptr<icu::SimpleDateFormat> part(format.clone());
    part->applyPattern(pattern);
    return part;
  }

  const std::string& dayOf(std::int64_t number, double milliseconds) {
    constexpr std::size_t mostDays = 20'000;  // more than fifty years
    if (days_.size() >= mostDays) days_.clear();
    const auto [found, isNew] = days_.try_emplace(number);
    if (isNew) found->second = text(*day_, milliseconds);
    return found->second;
  }

  std::unique_ptr<icu::BasicTimeZone> zone_;
  bool isDayFirst_;
  std::unique_ptr<icu::SimpleDateFormat> day_;
  std::unique_ptr<icu::SimpleDateFormat> time_;
  std::optional<Stretch> stretch_;                      // that the last date was in
  std::unordered_map<std::int64_t, std::string> days_;  // by their numbers since 1970, in the zone
  std::vector<std::string> times_;                      // by the seconds since midnight
};

}  // namespace

struct DateFormatter::Format {
  std::unique_ptr<icu::DateFormat> icu;
  std::unique_ptr<RememberedTexts> remembered;

  Format(icu::DateFormat* owned, const TimeZone& timeZone) : icu(owned) {
    if (!icu) throw std::runtime_error(u_errorName(U_MISSING_RESOURCE_ERROR));
    icu->adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZone.identifier)));
    remembered = RememberedTexts::of(*icu);
  }
};

DateFormatter::DateFormatter(std::unique_ptr<Format> format) : format_(std::move(format)) {}

DateFormatter::DateFormatter(std::string_view pattern, const TimeZone& timeZone, const Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  format_ = std::make_unique<Format>(
      new icu::SimpleDateFormat(icu::UnicodeString::fromUTF8(std::string(pattern)), icuLocale(locale), status),
      timeZone);
  if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

DateFormatter DateFormatter::fullDate(const TimeZone& timeZone, const Locale& locale) {
  icu::DateFormat* format = icu::DateFormat::createDateInstance(icu::DateFormat::kFull, icuLocale(locale));
  return DateFormatter(std::make_unique<Format>(format, timeZone));
}

DateFormatter DateFormatter::mediumTime(const TimeZone& timeZone, const Locale& locale) {
  icu::DateFormat* format = icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, icuLocale(locale));
  return DateFormatter(std::make_unique<Format>(format, timeZone));
}

DateFormatter DateFormatter::abbreviatedDateAndShortTime(const TimeZone& timeZone, const Locale& locale) {
  icu::DateFormat* format =
      icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kShort, icuLocale(locale));
  return DateFormatter(std::make_unique<Format>(format, timeZone));
}

DateFormatter::~DateFormatter() = default;
DateFormatter::DateFormatter(DateFormatter&&) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&&) noexcept = default;

std::string DateFormatter::string(Date date) const {
  const double seconds = wholeSecondsShown(date);
  if (format_->remembered) {
    if (auto written = format_->remembered->string(seconds)) return *std::move(written);
  }
  return text(*format_->icu, seconds * U_MILLIS_PER_SECOND);
}
