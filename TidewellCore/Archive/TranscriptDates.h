#pragma once

#include "TidewellCore/Platform/DateText.h"

// How transcripts write their dates. Made once for many chats, since it is costly to make; one thread at a time.
struct TranscriptDates {
  TranscriptDates(const TimeZone& timeZone, const Locale& locale)
      : inText("yyyy-MM-dd HH:mm:ss", timeZone, locale),
        days(DateFormatter::fullDate(timeZone, locale)),
        times(DateFormatter::mediumTime(timeZone, locale)) {}

  const DateFormatter inText;  // day and time, of the text file
  const DateFormatter days;    // of the page
  const DateFormatter times;
};
