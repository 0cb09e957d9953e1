#pragma once

#include <string>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/MessageFormat.h"
#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/TranscriptStyle.h"

// A chat's messages for other programs, in files that stand beside its transcripts (docs/formats/message-files.md).
namespace MessageFiles {

// Of the file in the chat's folder.
const char* nameOf(MessageFormat format);

std::string render(MessageFormat format, const ArchiveChat& chat, const TranscriptStyle& style,
                   const TimeZone& timeZone);

// A JSON object a line for each message. Throws TidewellError::ioFailure for a text that is not UTF-8.
std::string renderJSONLines(const ArchiveChat& chat, const TimeZone& timeZone);

// A table with a row for each message, below one that names the columns.
std::string renderCSV(const ArchiveChat& chat, const TranscriptStyle& style, const TimeZone& timeZone);

}  // namespace MessageFiles
