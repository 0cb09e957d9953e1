#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/MediaKind.h"
#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/TranscriptStyle.h"

// A chat as one page and as one text file, which stand beside its media.
namespace TranscriptWriter {

// A message as a transcript shows it.
struct Line {
  std::optional<Date> date;
  std::string sender;
  std::optional<std::string> text;
  std::optional<std::string> mediaFileName;  // the exported file, seen from the chat's folder
  std::optional<MediaKind> mediaKind;

  bool operator==(const Line&) const = default;
};

// A page that needs nothing but the media beside it. An undated line stands
// without a day above it.
std::string renderHTML(std::string_view chatName, const std::vector<Line>& lines, const TranscriptStyle& style,
                       const TimeZone& timeZone, const Locale& locale);

std::string renderText(std::string_view chatName, const std::vector<Line>& lines, const TimeZone& timeZone,
                       const Locale& locale);

}  // namespace TranscriptWriter
