#pragma once

#include <string>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/TranscriptDates.h"
#include "TidewellCore/TranscriptStyle.h"

// A chat as one page and as one text file, which stand beside its media.
namespace TranscriptWriter {

// A page that needs nothing but the media beside it. An undated message stands
// without a day above it.
std::string renderHTML(const ArchiveChat& chat, const TranscriptStyle& style, const TranscriptDates& dates);

// A line for each message, and below it, indented, what hangs on it. Notices have "*" for a sender.
std::string renderText(const ArchiveChat& chat, const TranscriptStyle& style, const TranscriptDates& dates);

}  // namespace TranscriptWriter
